// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/yield/postgresserver.h"

#include <QDir>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#include <csignal>
#include <sys/prctl.h>
#include <unistd.h>

namespace
{
constexpr int patienceMs = 30000;
constexpr uid_t nobody = 65534;

QString program(const QString& name)
{
    const QDir versions("/usr/lib/postgresql");
    const QString version = versions.entryList(QDir::Dirs | QDir::NoDotAndDotDot).value(0);
    return versions.filePath(version + "/bin/" + name);
}
} // namespace

void UnprivilegedProcess::setupChildProcess()
{
    if (geteuid() == 0 && (setgid(nobody) != 0 || setuid(nobody) != 0))
        _exit(1);
    prctl(PR_SET_PDEATHSIG, SIGINT);
}

QString PostgresServer::create()
{
    if (!QFile::exists(program("initdb")))
        return "PostgreSQL is not installed";
    if (geteuid() == 0 && chown(QFile::encodeName(folder.path()).constData(), nobody, nobody) != 0)
        return "the folder cannot be handed over";
    UnprivilegedProcess initdb;
    initdb.setWorkingDirectory(folder.path());
    initdb.start(program("initdb"),
                 {"--auth=trust", "--username=line", "--encoding=UTF8", "--locale=C",
                  // A language's order, unlike that of SQLite.
                  "--locale-provider=icu", "--icu-locale=de", "--no-sync",
                  folder.filePath("data")});
    if (!initdb.waitForFinished(patienceMs) || initdb.exitCode() != 0)
        return QString::fromLocal8Bit(initdb.readAllStandardError());
    QTcpServer portFinder;
    portFinder.listen(QHostAddress::LocalHost);
    port = portFinder.serverPort();
    portFinder.close();
    return start() ? QString() : "the server does not start";
}

bool PostgresServer::start()
{
    server.setWorkingDirectory(folder.path());
    server.setStandardErrorFile(QProcess::nullDevice());
    server.start(program("postgres"), {"-F", "-D", folder.filePath("data"), "-h", "127.0.0.1", "-p",
                                       QString::number(port), "-k", QString()});
    return QTest::qWaitFor(
        [this] {
            QProcess ready;
            ready.start(program("pg_isready"),
                        {"-q", "-h", "127.0.0.1", "-p", QString::number(port)});
            return ready.waitForFinished() && ready.exitCode() == 0;
        },
        patienceMs);
}

void PostgresServer::stop()
{
    if (server.state() == QProcess::NotRunning)
        return;
    kill(static_cast<pid_t>(server.processId()), SIGINT); // without waiting for its clients
    server.waitForFinished(patienceMs);
}

QString PostgresServer::location() const
{
    return QString("postgresql://line@127.0.0.1:%1/postgres").arg(port);
}
