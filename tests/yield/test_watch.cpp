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
#include <memory>

#include <sys/stat.h>
#include <unistd.h>

namespace
{
constexpr int patienceMs = 60000;
constexpr int stopMs = 2000;

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

    bool stops(int signal)
    {
        QElapsedTimer time;
        time.start();
        ::kill(static_cast<pid_t>(processId()), signal);
        return waitForFinished(patienceMs) && time.elapsed() < stopMs &&
               exitStatus() == NormalExit && exitCode() == 0;
    }

    QByteArray said;
};
} // namespace

/// The real watch, under what goes wrong at a plant. Each test of a unit overwrites the log of the
/// one before as soon as that one is on a disk. The working directory is each test's own.
class TestWatch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        umask(0); // the watch is another user
        qputenv("YIELD", ZORVI_YIELD);
        QCOMPARE(server.create(), QString());
    }

    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        QVERIFY(QFile::setPermissions(folder->path(), QFile::Permissions(0x7777)));
        QVERIFY(QDir::setCurrent(folder->path()) && QDir().mkdir("Logs") && QDir().mkdir("data"));
        database = "attempts.sqlite";
        QSqlDatabase::addDatabase("QSQLITE", "other").setDatabaseName(database);
        station = QString("W") + QTest::currentDataTag();
        written = "Logs";
    }

    void cleanup()
    {
        watch.reset();
        QSqlDatabase::removeDatabase("other");
        sh("umount -l Logs spool 2>/dev/null; kill $(cat noise 2>/dev/null) 2>/dev/null");
        kept.clear();
    }

    void everyTestIsKept_data()
    {
        QTest::addColumn<QStringList>("steps");
        const auto row = [](const char* name, const QStringList& steps) {
            QTest::newRow(name) << steps;
        };
        row("a browser reads", {"2 sql BEGIN; SELECT * FROM attempts", "5 sql COMMIT"});
        row("newer tables", {"2 sql UPDATE schema_version SET version = version + 1",
                             "5 sql UPDATE schema_version SET version = version - 1"});
        row("no server", {"0 server", "2 stop", "5 start"});
        row("no file", // and the folder is read once more
            {"0 sh : >Logs/junk.txt", "2 hear junk.txt: not imported",
             "2 sh mv attempts.sqlite away", "2 hear is gone", "5 sh mv away attempts.sqlite",
             "5 hear database is back"});
        row("a backup",
            {"5 sql DELETE FROM attempts WHERE tested_at = '" + timeOf(4) + "'",
             "5 sql DELETE FROM missed_bands; VACUUM INTO 'backup'",
             "5 sh chmod 666 backup; mv backup attempts.sqlite", "5 hear another file now"});
        row("no folder, then another",
            {"2 sh mv Logs away", "2 hear is not there", "2 write away", "2 sh mv away Logs",
             "2 wait", "3 sh mv Logs away; mkdir Logs"});
        row("a program makes files",
            {"0 sh while :; do : >Logs/a; sleep 0.05; rm Logs/a; done & echo $! >noise"});
        row("too many changes",
            {"2 hear new: 1", "2 sh kill -STOP $WATCH",
             ("2 sh for i in $(seq $(cat /proc/sys/fs/inotify/max_queued_events)); do "
              ": >Logs/.$((i % 2)); done"),
             "2 write Logs", "2 sh kill -CONT $WATCH", "2 wait"});
        row("a share", {"0 sh command -v bindfs", "1 hear is watched", "1 sh bindfs data Logs",
                        "1 folder data"});
        row("a full disk",
            {"0 sh mkdir spool && mount -t tmpfs -o size=256k,mode=777 tmpfs spool",
             "3 sh while ls spool/v1/*/logs/*; do sleep 0.1; done >/dev/null 2>&1",
             "3 sh cat /dev/zero >spool/filler 2>/dev/null || :", "5 hear No space left",
             "5 sh rm spool/filler", "5 hear has room again"});
        row("a link", {"0 sh ln -s ../data/U Logs"});
        row("a closed log",
            {"2 write data", "2 sh chmod 0 data/*; mv data/* Logs",
             "2 hear not imported: Permission denied", "2 sh chmod 644 Logs/*", "2 wait"});
        row("a slow log, looked at meanwhile",
            {"2 write data",
             "2 sh cd Logs; : >U; for i in 0 1 2; do dd status=none bs=3000 count=1 "
             "skip=$i if=../data/U >>U; sleep 1.4; done",
             "2 wait"});
    }

    void everyTestIsKept()
    {
        QFETCH(QStringList, steps);
        if (!perform(steps, 0))
            QSKIP("needs root and bindfs");
        start();
        for (int test = 1; test <= 4; ++test) {
            QVERIFY(perform(steps, test));
            write(written, test);
            waitFor(test);
            if (test == 1) // what goes wrong begins with a database that is there
                QTRY_COMPARE_WITH_TIMEOUT(stored().size(), 1, patienceMs);
        }
        QVERIFY(perform(steps, 5));
        QTRY_COMPARE_WITH_TIMEOUT(stored().size(), 4, patienceMs);
        QVERIFY2(watch->stops(SIGINT), watch->said.constData());
        QCOMPARE(watch->says("not imported"), steps.filter("not imported").size());
        QVERIFY(watch->says("database is away") <= 1);
        QCOMPARE(watch->says("database is back"), watch->says("database is away"));
    }

    /// Killed at any moment, also in the middle of a file, with the database away all the time. At
    /// the start the logs that changed last are kept.
    void killedAtAnyMoment()
    {
        const int tests = figures::count(20, 100);
        database = "later/attempts.sqlite";
        addOldLogs(250);
        int kills = -1;
        for (int test = 1; test <= tests; ++test) {
            write("Logs", test);
            while (!isKept(test)) {
                if (watch && watch->waitForFinished(QRandomGenerator::global()->bounded(100)))
                    QFAIL(watch->readAllStandardError());
                start();
                ++kills;
            }
        }
        QVERIFY(QDir().mkdir("later"));
        QTRY_COMPARE_WITH_TIMEOUT(stored().size(), tests + 1, patienceMs);
        figures::print("watches killed, the database away", kills, 0);
    }

    /// What waits is for the database and the station that it was kept for, whatever is watched
    /// next.
    void stopsWhileTheDatabaseIsLocked()
    {
        startWithOneTest();
        ask("BEGIN EXCLUSIVE");
        write("Logs", 2);
        QTRY_COMPARE_WITH_TIMEOUT(waiting().size(), 1, patienceMs);
        QVERIFY(watch->stops(SIGTERM));
        QCOMPARE(watch->says("wait in the spool: 1"), 1);
        ask("COMMIT");
        QCOMPARE(status("1 wait since"), 0);
        QCOMPARE(sh("touch -d '62 minutes ago' spool/v1/*/logs/*"), 0);
        QCOMPARE(status("1 wait since"), 1);
        QVERIFY(sh("find spool -perm /077 | grep .") != 0);

        database = "other.sqlite";
        QVERIFY2(isRefused("is that of the database"), watch->said);
        QVERIFY(!QFile::exists(database));
        database = "attempts.sqlite";
        station = "X";
        start();
        QTRY_COMPARE_WITH_TIMEOUT(stored(), QStringList{timeOf(2)}, patienceMs);
        hear("known under another station");
        station = "W";
        QTRY_COMPARE_WITH_TIMEOUT(stored().size(), 2, patienceMs);
        const auto first = std::move(watch);
        QVERIFY2(isRefused("in use by another watch"), watch->said);
        QVERIFY(first->stops(SIGTERM));
        database = "other.sqlite"; // nothing waits any more
        start();
        QTRY_COMPARE_WITH_TIMEOUT(stored().size(), 1, patienceMs);
    }

    void hopelessDatabase()
    {
        QCOMPARE(status(": it is not there"), 1);
        ask("PRAGMA encoding = 'UTF-16'; CREATE TABLE other (a)");
        QVERIFY2(isRefused("encoding UTF8"), watch->said);
    }

    /// A log that cannot be stored although the database works stops no other.
    void setsAside()
    {
        startWithOneTest();
        QCOMPARE(status(": 0 wait"), 0);
        ask("UPDATE attempts SET marks = x'00'; BEGIN EXCLUSIVE");
        write("Logs", 2);
        unitlogs::write("Logs/V", "V", "whole");
        QTRY_COMPARE_WITH_TIMEOUT(waiting().size(), 2, patienceMs);
        ask("COMMIT");
        QTRY_COMPARE_WITH_TIMEOUT(stored(), QStringList({timeOf(1), timeOf(0)}), patienceMs);
        hear("was set aside as ");
        write("Logs", 2);
        unitlogs::write("Logs/V", "V", "whole", unitlogs::noon().addSecs(7200));
        QTRY_COMPARE_WITH_TIMEOUT(stored().size(), 3, patienceMs);
        QVERIFY(watch->stops(SIGTERM));
        QCOMPARE(watch->says("was set aside as "), 1);
        QCOMPARE(status(": the marks of"), 1);
        QCOMPARE(sh("[ $(ls spool/v1/*/aside | wc -l) = 2 ] && grep -q 12:02:00 "
                    "spool/v1/*/aside/*[!n] && rm spool/v1/*/aside/*"),
                 0);
        QCOMPARE(sh("\"$YIELD\" import --station W --database attempts.sqlite Logs >out; grep -q "
                    "'2 logs: 0 new, 1 already known, 0 without any mark, 1 refused' out"),
                 0);
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
        write("Logs", 0);
        QCOMPARE(sh(": >Logs/-.txt"), 0);
        addOldLogs(oldLogs);
        QCOMPARE(sh("\"$YIELD\" import --database attempts.sqlite Logs >out; [ $? = 1 ] && "
                    "grep -q ', 1 refused$' out && chmod 666 attempts.sqlite"),
                 0);
        start();
        hear("Logs/-.txt: not imported");
        QTRY_COMPARE_WITH_TIMEOUT(stored().size(), 2, patienceMs);
        const auto cpuMs = [this] {
            constexpr int userTime = 13; // in ticks of 10 ms, and the system's after it
            QFile file(QString("/proc/%1/stat").arg(watch->processId()));
            file.open(QIODevice::ReadOnly);
            const QList<QByteArray> fields = file.readAll().split(' ');
            return 10.0 * (fields.value(userTime).toInt() + fields.value(userTime + 1).toInt());
        };
        const double before = cpuMs();
        for (int test = 1; test <= logCount; ++test) {
            write("Logs", test);
            QTRY_VERIFY_WITH_TIMEOUT(stored().contains(timeOf(test)), patienceMs);
        }
        const double eachMs = (cpuMs() - before) / logCount;
        figures::print(QString("logs beside %1").arg(oldLogs), logCount, 0,
                       QString("%1 ms of CPU each").arg(eachMs));
        QVERIFY(eachMs < mostMs);
    }

private:
    /// Does the steps before that test: its number, what is done, and with what. False if a command
    /// of the shell failed.
    bool perform(const QStringList& steps, int test)
    {
        for (const QString& step : steps.filter(QRegularExpression(QString("^%1 ").arg(test)))) {
            const QString what = step.section(' ', 1, 1);
            const QString with = step.section(' ', 2);
            if (what == "sh" && sh(with) != 0)
                return false;
            if (what == "sql")
                ask(with);
            if (what == "hear")
                hear(with.toUtf8());
            if (what == "folder")
                written = with;
            if (what == "write")
                write(with, test);
            if (what == "wait")
                waitFor(test);
            if (what == "server")
                database = server.location();
            if (what == "stop")
                server.stop();
            if (what == "start" && !server.start())
                return false;
        }
        return true;
    }

    static int sh(const QString& command) { return QProcess::execute("sh", {"-c", command}); }

    /// The time of a test of the unit.
    static QString timeOf(int test)
    {
        return unitlogs::noon().addSecs(60 * test).toString(Qt::ISODate);
    }

    /// As the station writes it.
    static void write(const QString& path, int test)
    {
        unitlogs::write(path + "/U", "U", QString("whole-%1.%2").arg(test % 9).arg(test % 13),
                        unitlogs::noon().addSecs(60 * test));
    }

    /// The same log under very many names.
    static void addOldLogs(int count)
    {
        constexpr int mostLinks = 50000;
        for (int i = 0; i < count; ++i) {
            const QString source = QString("data/%1").arg(i / mostLinks);
            if (i % mostLinks == 0)
                unitlogs::write(source, "V", "whole", unitlogs::noon().addSecs(-60));
            QVERIFY(link(qPrintable(source), qPrintable(QString("Logs/%1").arg(i))) == 0);
        }
    }

    void start()
    {
        watch = std::make_unique<Watch>();
        watch->start(ZORVI_YIELD, {"import", "--watch", "--station", station, "--database",
                                   database, "--spool", "spool", "Logs"});
        qputenv("WATCH", QByteArray::number(watch->processId()));
    }

    void startWithOneTest()
    {
        start();
        write("Logs", 1);
        QTRY_COMPARE_WITH_TIMEOUT(stored().size(), 1, patienceMs);
    }

    bool isRefused(const QByteArray& why)
    {
        start();
        return watch->waitForFinished(patienceMs) && watch->exitCode() == 2 &&
               watch->says(why) == 1;
    }

    /// Waits until the watch has said that, once.
    void hear(const QByteArray& text)
    {
        QTRY_COMPARE_WITH_TIMEOUT(watch->says(text), 1, patienceMs);
    }

    void waitFor(int test) { QTRY_VERIFY_WITH_TIMEOUT(isKept(test), patienceMs); }

    /// Of attempts.sqlite, on another connection.
    static void ask(const QString& statements)
    {
        for (const QString& statement : statements.split("; ")) {
            QSqlQuery query(QSqlDatabase::database("other"));
            QVERIFY2(query.exec(statement), qPrintable(query.lastError().text()));
            query.next();
        }
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
    static QStringList waiting()
    {
        QStringList paths;
        for (const Spool& spool : Spool::below("spool"))
            paths += spool.waiting();
        return paths;
    }

    /// On a disk that the next test does not write to.
    bool isKept(int test)
    {
        QString reason;
        for (const QString& path : waiting())
            if (const auto log = logfiles::read(path, reason))
                kept << log->log.testedAt;
        if (!kept.contains(timeOf(test)))
            kept += stored();
        return kept.contains(timeOf(test));
    }

    /// The exit status; 9 if it does not say that.
    int status(const QString& text) const
    {
        return sh(QString("\"$YIELD\" status --database %1 --spool spool >out; status=$?; "
                          "grep -qF '%2' out && exit $status; exit 9")
                      .arg(database, text));
    }

    PostgresServer server;
    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<Watch> watch;
    QString database;
    QString station;
    QString written; ///< Where the station writes.
    QStringList kept;
};

QTEST_GUILESS_MAIN(TestWatch)
#include "test_watch.moc"
