// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDir>
#include <QProcess>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/prctl.h>
#include <unistd.h>

/// A process that root starts as nobody, and that ends with the test whatever happens to it.
class UnprivilegedProcess : public QProcess
{
protected:
    void setupChildProcess() override
    {
        constexpr uid_t nobody = 65534;
        if (geteuid() == 0 && (setgid(nobody) != 0 || setuid(nobody) != 0))
            _exit(1);
        prctl(PR_SET_PDEATHSIG, SIGINT);
    }
};

/// A real PostgreSQL server in a temporary folder and at a free port.
class PostgresServer
{
public:
    ~PostgresServer() { stop(); }

    /// Why there can be no server; empty if there is one.
    QString create()
    {
        QFile::setPermissions(folder.path(), QFile::Permissions(0x7777)); // also nobody's
        UnprivilegedProcess initdb;
        initdb.setWorkingDirectory(folder.path());
        initdb.start(program("initdb"),
                     {"--auth=trust", "--username=line", "--encoding=UTF8", "--locale=C",
                      // A language's order, unlike that of SQLite.
                      "--locale-provider=icu", "--icu-locale=de", "--no-sync",
                      folder.filePath("data")});
        if (!initdb.waitForFinished(patienceMs) || initdb.exitCode() != 0)
            return initdb.errorString() + initdb.readAllStandardError();
        QTcpServer portFinder;
        portFinder.listen(QHostAddress::LocalHost);
        port = QString::number(portFinder.serverPort());
        portFinder.close();
        return start() ? QString() : "the server does not start";
    }

    bool start()
    {
        server.setWorkingDirectory(folder.path());
        server.setStandardErrorFile(QProcess::nullDevice());
        server.start(program("postgres"), {"-F", "-D", folder.filePath("data"), "-h", "127.0.0.1",
                                           "-p", port, "-k", QString()});
        const auto isReady = [this] {
            return QProcess::execute(program("pg_isready"),
                                     {"-q", "-h", "127.0.0.1", "-p", port}) == 0;
        };
        return QTest::qWaitFor(isReady, patienceMs);
    }

    void stop()
    {
        if (server.state() == QProcess::NotRunning)
            return;
        kill(static_cast<pid_t>(server.processId()), SIGINT); // without waiting for its clients
        server.waitForFinished(patienceMs);
    }

    /// For --database.
    QString location() const { return "postgresql://line@127.0.0.1:" + port + "/postgres"; }

private:
    static constexpr int patienceMs = 30000;

    static QString program(const QString& name)
    {
        const QDir versions("/usr/lib/postgresql");
        const QString version = versions.entryList(QDir::Dirs | QDir::NoDotAndDotDot).value(0);
        return versions.filePath(version + "/bin/" + name);
    }

    QTemporaryDir folder;
    UnprivilegedProcess server;
    QString port;
};
