// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/support/figures.h"
#include "tests/yield/postgresserver.h"
#include "tests/yield/unitlogs.h"
#include "yield/intake/spool.h"
#include "yield/logs/logfiles.h"
#include "yield/store/database.h"

#include <QDir>
#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSqlError>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <functional>
#include <memory>

#include <sys/stat.h>
#include <unistd.h>

namespace
{
constexpr int patienceMs = 60000;
constexpr int stopMs = 2000;
const QString yieldProgram = QStringLiteral(ZORVI_YIELD);

/// A watch as it runs on a plant's computer: without root's rights.
struct Watch : UnprivilegedProcess {
    ~Watch() override
    {
        kill();
        waitForFinished(patienceMs);
    }

    /// How often it said that, on either stream.
    int says(const QByteArray& text)
    {
        said += readAllStandardOutput() + readAllStandardError();
        return said.count(text);
    }

    void send(int signal) const { ::kill(static_cast<pid_t>(processId()), signal); }

    bool stops(int signal)
    {
        QElapsedTimer time;
        time.start();
        send(signal);
        return waitForFinished(patienceMs) && time.elapsed() < stopMs &&
               exitStatus() == NormalExit && exitCode() == 0;
    }

    QByteArray said;
};
} // namespace

/// What happens before the watch starts (0), before each of four tests of a unit and at the end
/// (5).
using Step = std::function<void()>;
using Steps = QMap<int, Step>;
Q_DECLARE_METATYPE(Steps)

/// The real watch, under what goes wrong at a plant. Each test of a unit overwrites the log of the
/// one before as soon as that one is on a disk.
class TestWatch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        umask(0); // the watch is another user
        const QString problem = server.create();
        QVERIFY2(problem.isEmpty(), qPrintable(problem));
    }

    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        QVERIFY(QFile::setPermissions(folder->path(), QFile::Permissions(0x7777)));
        QVERIFY(QDir().mkdir(logs()) && QDir().mkdir(data()));
        database = data() + "/attempts.sqlite";
        station = QString("W") + QTest::currentDataTag();
        written = logs();
    }

    void cleanup()
    {
        watch.reset();
        QSqlDatabase::removeDatabase("other");
        for (const QString& path : mounted)
            QProcess::execute("umount", {"-l", path});
        mounted.clear();
        kept.clear();
    }

    void everyTestIsKept_data()
    {
        QTest::addColumn<Steps>("steps");
        addDatabaseRows();
        addFolderRows();
        addLogRows();
    }

    void everyTestIsKept()
    {
        QFETCH(Steps, steps);
        const auto step = [&](int test) {
            if (steps.contains(test))
                steps[test]();
        };
        step(0);
        if (!skipReason.isEmpty())
            QSKIP(qPrintable(std::exchange(skipReason, {})));
        start();
        for (int test = 1; test <= 4; ++test) {
            step(test);
            write(written, test);
            waitFor(test);
        }
        step(5);
        QTRY_COMPARE_WITH_TIMEOUT(stored().size(), 4, patienceMs);
        QVERIFY(watch->says("database is away") <= 1);
        hear("database is back", watch->says("database is away"));
        QVERIFY2(watch->stops(SIGINT), watch->said.constData());
    }

    /// Killed at any moment, also in the middle of a file, with the database away all the time. At
    /// the start the logs that changed last are kept.
    void killedAtAnyMoment()
    {
        const int tests = figures::count(20, 100);
        constexpr int oldLogs = 250;
        database = data() + "/later/attempts.sqlite";
        unitlogs::write(data(), "V", unitlogs::whole());
        for (int i = 0; i < oldLogs; ++i)
            addLink(unitlogs::path(data(), "V"), i);
        int kills = -1;
        for (int test = 1; test <= tests; ++test) {
            write(logs(), test);
            while (!isKept(test)) {
                if (watch && watch->waitForFinished(QRandomGenerator::global()->bounded(100)))
                    QFAIL(watch->readAllStandardError());
                start();
                ++kills;
            }
        }
        QVERIFY(QDir().mkdir(data() + "/later"));
        QTRY_COMPARE_WITH_TIMEOUT(stored().size(), tests + 1, patienceMs);
        figures::print("watches killed, the database away", kills, 0);
    }

    /// What waits is for the database and the station that it was kept for, whatever is watched
    /// next.
    void stopsWhileTheDatabaseIsLocked()
    {
        startWithOneTest();
        ask("BEGIN EXCLUSIVE");
        write(logs(), 2);
        QTRY_COMPARE_WITH_TIMEOUT(waiting().size(), 1, patienceMs);
        QVERIFY(watch->stops(SIGTERM));
        QCOMPARE(watch->says("wait in the spool: 1"), 1);
        ask("COMMIT");
        QCOMPARE(status("1 wait since"), 0);
        QFile log(waiting().at(0));
        QVERIFY(log.open(QIODevice::Append) &&
                log.setFileTime(QDateTime::currentDateTime().addSecs(-3700),
                                QFileDevice::FileModificationTime));
        QCOMPARE(status("1 wait since"), 1);
        QProcess find;
        find.start("find", {spool(), "-perm", "/077"});
        QVERIFY(find.waitForFinished(patienceMs));
        QCOMPARE(find.readAllStandardOutput(), QByteArray());

        const QString here = std::exchange(database, data() + "/other.sqlite");
        QVERIFY2(isRefused("is that of the database"), watch->said);
        QVERIFY(!QFile::exists(database));
        database = here;
        station = "X";
        start();
        QTRY_COMPARE_WITH_TIMEOUT(stored(), QStringList{timeOf(2)}, patienceMs);
        station = "W";
        QTRY_COMPARE_WITH_TIMEOUT(stored().size(), 2, patienceMs);
        const auto first = std::move(watch);
        QVERIFY2(isRefused("in use by another watch"), watch->said);
        QVERIFY(first->stops(SIGTERM));
        database = data() + "/other.sqlite"; // nothing waits any more
        start();
        QTRY_COMPARE_WITH_TIMEOUT(stored().size(), 1, patienceMs);
    }

    void hopelessDatabase()
    {
        QCOMPARE(status(": nothing waits\n"), 1);
        ask("PRAGMA encoding = 'UTF-16'; CREATE TABLE other (a)");
        QVERIFY2(isRefused("encoding UTF8"), watch->said);
    }

    /// A log that cannot be stored although the database works stops no other.
    void setsAside()
    {
        startWithOneTest();
        QCOMPARE(status(": 0 wait\n"), 0);
        ask("UPDATE attempts SET marks = x'00'; BEGIN EXCLUSIVE");
        write(logs(), 2);
        unitlogs::write(logs(), "V", unitlogs::whole(), unitlogs::noon());
        QTRY_COMPARE_WITH_TIMEOUT(waiting().size(), 2, patienceMs);
        ask("COMMIT");
        QTRY_COMPARE_WITH_TIMEOUT(stored(), QStringList({timeOf(1), timeOf(0)}), patienceMs);
        hear("was set aside as ");
        write(logs(), 2);
        unitlogs::write(logs(), "V", unitlogs::whole(), unitlogs::noon().addSecs(7200));
        QTRY_COMPARE_WITH_TIMEOUT(stored().size(), 3, patienceMs);
        QCOMPARE(watch->says("was set aside as "), 1);
        QCOMPARE(status("    set aside: "), 1);
        const QStringList aside = Spool::below(spool()).at(0).setAside();
        QCOMPARE(aside.size(), 1);
        QString reason;
        QCOMPARE(logfiles::read(aside[0], reason)->testedAt, timeOf(2));
        QVERIFY(!Spool::reasonFor(aside[0]).isEmpty());
        QFile::remove(aside[0]);
        QCOMPARE(status("station \"W\": newest log 2026-11-21 14:00:00"), 0);
        QFile::remove(database);
        QCOMPARE(status("away: there is no database"), 1);
    }

    /// The cost of a log does not depend on how many lie in the folder already; and of very many
    /// files the first one that is refused counts.
    void manyLogs()
    {
        constexpr int logCount = 20;
        constexpr double mostMs = 10;
        const int oldLogs = figures::count(20000, 200000);
        touch(logs() + "/-.txt");
        unitlogs::write(logs(), "V", unitlogs::whole(), unitlogs::noon().addSecs(-60));
        write(data(), 1);
        for (int i = 0; i < oldLogs; ++i)
            addLink(logOf(data()), i);
        QProcess import;
        import.start(yieldProgram, {"import", "--database", database, logs()});
        QVERIFY(import.waitForFinished(patienceMs));
        QCOMPARE(import.exitCode(), 1);
        QVERIFY(import.readAllStandardOutput().endsWith(", 1 refused\n"));
        QVERIFY(QFile::setPermissions(database, QFile::Permissions(0x6666)));
        start();
        hear("not imported");
        const auto cpuMs = [this] {
            constexpr int userTime = 13; // in ticks of 10 ms, and the system's after it
            QFile file(QString("/proc/%1/stat").arg(watch->processId()));
            file.open(QIODevice::ReadOnly);
            const QList<QByteArray> fields = file.readAll().split(' ');
            return 10.0 * (fields.value(userTime).toInt() + fields.value(userTime + 1).toInt());
        };
        QTRY_VERIFY_WITH_TIMEOUT(stored().contains(timeOf(-1)), patienceMs);
        const double before = cpuMs();
        for (int test = 2; test < logCount + 2; ++test) {
            write(logs(), test);
            QTRY_VERIFY_WITH_TIMEOUT(stored().contains(timeOf(test)), patienceMs);
        }
        const double eachMs = (cpuMs() - before) / logCount;
        figures::print(QString("logs beside %1").arg(oldLogs), logCount, 0,
                       QString("%1 ms of CPU each").arg(eachMs));
        QVERIFY(eachMs < mostMs);
    }

private:
    static void addRow(const char* name, const Steps& steps) { QTest::newRow(name) << steps; }

    void addDatabaseRows()
    {
        addRow("a browser reads",
               {{2, asks("BEGIN; SELECT * FROM attempts")}, {5, asks("COMMIT")}});
        addRow("newer tables", {{2, asks("UPDATE schema_version SET version = version + 1")},
                                {5, asks("UPDATE schema_version SET version = version - 1")}});
        addRow("no server", {{0, [this] { database = server.location(); }},
                             {2, [this] { server.stop(); }},
                             {5, [this] { QVERIFY(server.start()); }}});
        const auto leave = [this] {
            hear("junk.txt: not imported: ");
            QVERIFY(QFile::rename(database, database + ".away"));
            hear("is gone");
        };
        const auto comeBack = [this] {
            QVERIFY(QFile::rename(database + ".away", database));
            hear("database is back");
            QCOMPARE(watch->says("not imported"), 1); // the folder has been read once more
        };
        addRow("no file",
               {{0, [this] { touch(logs() + "/junk.txt"); }}, {2, leave}, {5, comeBack}});
        const auto restore = [this] {
            const QString backup = data() + "/backup";
            ask("DELETE FROM attempts WHERE tested_at = '" + timeOf(4) +
                "'; DELETE FROM missed_bands; VACUUM INTO '" + backup + "'");
            QVERIFY(QFile::setPermissions(backup, QFile::Permissions(0x6666)));
            QVERIFY(rename(qPrintable(backup), qPrintable(database)) == 0);
            hear("another file now");
        };
        addRow("a backup is restored", {{5, restore}});
    }

    void addFolderRows()
    {
        const auto leave = [this] {
            QVERIFY(QFile::rename(logs(), away()));
            hear("is not there");
            write(away(), 2);
            QVERIFY(QFile::rename(away(), logs()));
            waitFor(2);
        };
        const auto replace = [this] {
            QVERIFY(QFile::rename(logs(), away()) && QDir().mkdir(logs()));
        };
        addRow("the folder is away, then another",
               {{2, leave}, {3, replace}, {5, [this] { hear("is watched", 3); }}});
        const auto makeNoise = [this] {
            const QString loop = "while :; do : >\"$0\"; sleep 0.05; rm \"$0\"; done";
            noise.start("sh", {"-c", loop, logs() + "/noise"});
        };
        addRow("a program makes files", {{0, makeNoise}, {5, [this] { noise.kill(); }}});
        const auto overflow = [this] {
            QFile most("/proc/sys/fs/inotify/max_queued_events");
            QVERIFY(most.open(QIODevice::ReadOnly));
            watch->send(SIGSTOP);
            for (int i = most.readAll().trimmed().toInt(); i >= 0; --i)
                touch(logs() + (i % 2 == 0 ? "/.a" : "/.b"));
            write(logs(), 2);
            watch->send(SIGCONT);
            waitFor(2);
        };
        addRow("too many changes at once", {{2, overflow}});
        const auto share = [this] {
            mount("bindfs", {data(), logs()});
            written = data();
        };
        addRow("a share of another computer", {{0, share}});
        const auto mountSpool = [this] {
            QVERIFY(QDir().mkdir(spool()));
            mount("mount", {"-t", "tmpfs", "-o", "size=256k,mode=777", "tmpfs", spool()});
        };
        const auto fill = [this] {
            QTRY_COMPARE_WITH_TIMEOUT(waiting().size(), 0, patienceMs);
            QProcess::execute("sh", {"-c", "cat /dev/zero >\"$0\"/filler", spool()});
        };
        const auto empty = [this] {
            hear("No space left");
            QVERIFY(QFile::remove(spool() + "/filler"));
            hear("has room again");
        };
        addRow("the disk of the spool is full", {{0, mountSpool}, {3, fill}, {5, empty}});
    }

    void addLogRows()
    {
        addRow("the log is a link", {{0, [this] { QFile::link(logOf(data()), logOf(logs())); }}});
        const auto closed = [this] {
            write(data(), 2);
            QFile::setPermissions(logOf(data()), {});
            QVERIFY(rename(qPrintable(logOf(data())), qPrintable(logOf(logs()))) == 0);
            hear("Permission denied");
            QFile::setPermissions(logOf(logs()), QFile::Permissions(0x6444));
            waitFor(2);
        };
        const auto slow = [this] {
            write(data(), 3);
            QFile source(logOf(data()));
            QFile target(logOf(logs()));
            QVERIFY(source.open(QIODevice::ReadOnly) && target.open(QIODevice::WriteOnly));
            while (target.write(source.read(500)) > 0) {
                target.close();
                QTest::qWait(400); // so long that it is looked at meanwhile
                QVERIFY(target.open(QIODevice::Append));
            }
            target.close();
            waitFor(3);
            QCOMPARE(watch->says("not imported"), 1);
        };
        addRow("the log is closed, then slow", {{2, closed}, {3, slow}});
    }

    QString logs() const { return folder->filePath("Logs"); }
    QString away() const { return folder->filePath("Logs-2026"); }
    QString data() const { return folder->filePath("data"); }
    QString spool() const { return folder->filePath("spool"); }
    static QString logOf(const QString& path) { return unitlogs::path(path, "U"); }

    static QString timeOf(int test)
    {
        return unitlogs::noon().addSecs(60 * test).toString(Qt::ISODate);
    }

    static void touch(const QString& path) { QFile(path).open(QIODevice::WriteOnly); }

    /// One of very many logs: the same file under another name.
    void addLink(const QString& path, int number) const
    {
        constexpr int mostLinks = 50000;
        const QString source = path + QString::number(number / mostLinks);
        if (number % mostLinks == 0)
            QVERIFY(QFile::copy(path, source));
        QVERIFY(link(qPrintable(source), qPrintable(logs() + QString("/%1.txt").arg(number))) == 0);
    }

    void start()
    {
        watch = std::make_unique<Watch>();
        watch->start(yieldProgram, {"import", "--watch", "--station", station, "--database",
                                    database, "--spool", spool(), logs()});
    }

    void startWithOneTest()
    {
        start();
        write(logs(), 1);
        QTRY_COMPARE_WITH_TIMEOUT(stored().size(), 1, patienceMs);
    }

    bool isRefused(const QByteArray& why)
    {
        start();
        return watch->waitForFinished(patienceMs) && watch->exitCode() == 2 &&
               watch->says(why) == 1;
    }

    /// Waits until the watch has said that so often.
    void hear(const QByteArray& text, int times = 1)
    {
        QTRY_COMPARE_WITH_TIMEOUT(watch->says(text), times, patienceMs);
    }

    void waitFor(int test) { QTRY_VERIFY_WITH_TIMEOUT(isKept(test), patienceMs); }

    /// As the station writes it.
    static void write(const QString& path, int test)
    {
        testlog::write(
            logOf(path),
            unitlogs::lines("U", unitlogs::noon().addSecs(60 * test),
                            unitlogs::allBut({{test % 9, test % 13}, {18, 0}, {18, 1}})));
    }

    void mount(const QString& program, const QStringList& arguments)
    {
        if (QProcess::execute(program, arguments) == 0)
            mounted << arguments.constLast();
        else
            skipReason = QString("%1 needs root, or is missing").arg(program);
    }

    /// Of the SQLite file, on another connection.
    void ask(const QString& statements) const
    {
        auto other = QSqlDatabase::database("other", false);
        if (!other.isValid())
            other = QSqlDatabase::addDatabase("QSQLITE", "other");
        other.setDatabaseName(database);
        QVERIFY(other.isOpen() || other.open());
        for (const QString& statement : statements.split("; ")) {
            QSqlQuery query(other);
            QVERIFY2(query.exec(statement), qPrintable(query.lastError().text()));
            query.next();
        }
    }

    Step asks(const QString& statements) const
    {
        return [=] { ask(statements); };
    }

    /// The times of the attempts that the database has; empty while it is away.
    QStringList stored() const
    {
        try {
            Database reading(database, Database::Access::Read);
            return unitlogs::rows(reading.connection(), station)
                .filter("attempt")
                .replaceInStrings(QRegularExpression("^attempt [UV] (\\S*).*"), "\\1");
        } catch (const DatabaseError&) {
            return {};
        }
    }

    /// The logs in the spool.
    QStringList waiting() const
    {
        QStringList paths;
        for (const Spool& place : Spool::below(spool()))
            paths += place.waiting();
        return paths;
    }

    /// On a disk that the next test does not write to.
    bool isKept(int test)
    {
        QString reason;
        for (const QString& path : waiting())
            if (const auto log = logfiles::read(path, reason))
                kept << log->testedAt;
        if (!kept.contains(timeOf(test)))
            kept += stored();
        return kept.contains(timeOf(test));
    }

    /// The exit status; -1 if it does not say that.
    int status(const QByteArray& text) const
    {
        QProcess process;
        process.start(yieldProgram, {"status", "--database", database, "--spool", spool()});
        if (!process.waitForFinished(patienceMs) || !process.readAllStandardOutput().contains(text))
            return -1;
        return process.exitCode();
    }

    PostgresServer server;
    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<Watch> watch;
    QProcess noise;
    QString database;
    QString station;
    QString written; ///< Where the station writes.
    QStringList kept;
    QStringList mounted;
    QString skipReason;
};

QTEST_GUILESS_MAIN(TestWatch)
#include "test_watch.moc"
