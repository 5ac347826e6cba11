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
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <functional>
#include <memory>

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

/// What happens before the watch starts (0), before each of four tests of a unit and at the end
/// (5).
using Step = std::function<void(int test)>;
Q_DECLARE_METATYPE(Step)

/// The real watch, under what goes wrong at a plant. Each test of a unit overwrites the log of the
/// one before as soon as that one is on a disk.
class TestWatch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        const QString problem = server.create();
        QVERIFY2(problem.isEmpty(), qPrintable(problem));
    }

    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        for (const QString& path : {folder->path(), logs(), data(), spool()}) {
            QDir().mkpath(path);
            QVERIFY(QFile::setPermissions(path, QFile::Permissions(0x7777)));
        }
        database = data() + "/attempts.sqlite";
        station = QString("W") + QTest::currentDataTag();
        written = logs();
    }

    void cleanup()
    {
        watch.reset();
        other = QSqlDatabase();
        QSqlDatabase::removeDatabase("other");
        for (const QString& path : mounted)
            QProcess::execute("umount", {"-l", path});
        mounted.clear();
        kept.clear();
    }

    void everyTestIsKept_data()
    {
        QTest::addColumn<Step>("step");
        const auto row = [](const char* name, const Step& step) { QTest::newRow(name) << step; };
        row("a good day", [](int) {});
        row("a browser reads the database", [this](int test) {
            if (test == 2)
                ask({"BEGIN", "SELECT * FROM attempts"});
            if (test == 5)
                ask({"COMMIT"});
        });
        row("the file is away", [this](int test) {
            QFile junk(logs() + "/junk.txt");
            if (test == 0)
                QVERIFY(junk.open(QIODevice::WriteOnly));
            if (test == 2) {
                QTRY_COMPARE_WITH_TIMEOUT(watch->says("junk.txt: not imported: "), 1, patienceMs);
                QVERIFY(QFile::rename(database, database + ".away"));
                QTRY_COMPARE_WITH_TIMEOUT(watch->says("is gone"), 1, patienceMs);
            }
            if (test != 5)
                return;
            QVERIFY(QFile::rename(database + ".away", database));
            QTRY_COMPARE_WITH_TIMEOUT(watch->says("database is back"), 1, patienceMs);
            QCOMPARE(watch->says("not imported"), 1); // the folder has been read once more
        });
        row("the tables are newer", [this](int test) {
            if (test == 2)
                ask({"UPDATE schema_version SET version = version + 1"});
            if (test == 5)
                ask({"UPDATE schema_version SET version = version - 1"});
        });
        row("the server is away", [this](int test) {
            database = server.location();
            if (test == 2)
                server.stop();
            if (test == 5)
                QVERIFY(server.start());
        });
        row("a backup is restored", [this](int test) {
            if (test != 5)
                return;
            const QString backup = data() + "/backup";
            ask({"DELETE FROM attempts WHERE tested_at = '" + timeOf(4) + "'",
                 "DELETE FROM missed_bands", QString("VACUUM INTO '%1'").arg(backup)});
            QVERIFY(QFile::setPermissions(backup, QFile::Permissions(0x6666)));
            QVERIFY(rename(qPrintable(backup), qPrintable(database)) == 0);
            QTRY_COMPARE_WITH_TIMEOUT(watch->says("another file now"), 1, patienceMs);
        });
        row("the folder is replaced", [this](int test) {
            if (test == 5)
                QTRY_COMPARE_WITH_TIMEOUT(watch->says("is watched"), 2, patienceMs);
            if (test != 3)
                return;
            QVERIFY(QFile::rename(logs(), data() + "/Logs-2026"));
            QVERIFY(QDir().mkdir(logs()));
        });
        row("the folder is away", [this](int test) {
            const QString away = data() + "/Logs-2026";
            if (test != 3)
                return;
            QVERIFY(QFile::rename(logs(), away));
            QTRY_COMPARE_WITH_TIMEOUT(watch->says("is not there"), 1, patienceMs);
            write(away, test);
            QVERIFY(QFile::rename(away, logs()));
            QTRY_VERIFY_WITH_TIMEOUT(isKept(test), patienceMs);
        });
        row("a program makes files", [this](int test) {
            if (test == 0)
                noise.start("sh", {"-c", "while :; do : >\"$0\"; sleep 0.05; rm \"$0\"; done",
                                   logs() + "/noise"});
            if (test == 5)
                noise.kill();
            noise.waitForFinished(test == 5 ? patienceMs : 0);
        });
        row("a log cannot be read for a moment", [this](int test) {
            if (test != 2)
                return;
            write(data(), test);
            QFile::setPermissions(logOf(data()), {});
            QVERIFY(rename(qPrintable(logOf(data())), qPrintable(logOf(logs()))) == 0);
            QTRY_COMPARE_WITH_TIMEOUT(watch->says("Permission denied"), 1, patienceMs);
            QFile::setPermissions(logOf(logs()), QFile::Permissions(0x6444));
            QTRY_VERIFY_WITH_TIMEOUT(isKept(test), patienceMs);
        });
        row("the log is written slowly", [this](int test) {
            if (test != 2)
                return;
            write(data(), test);
            QFile source(logOf(data()));
            QFile slow(logOf(logs()));
            QVERIFY(source.open(QIODevice::ReadOnly) && slow.open(QIODevice::WriteOnly));
            while (slow.write(source.read(500)) > 0) {
                slow.close();
                QTest::qWait(400); // so long that it is looked at meanwhile
                QVERIFY(slow.open(QIODevice::Append));
            }
            slow.close();
            QTRY_VERIFY_WITH_TIMEOUT(isKept(test), patienceMs);
            QCOMPARE(watch->says("not imported"), 0);
        });
        row("the log is a link", [this](int test) {
            if (test == 0)
                QVERIFY(QFile::link(logOf(data()), logOf(logs())));
        });
        row("the disk of the spool is full", [this](int test) {
            QFile filler(spool() + "/filler");
            if (test == 0)
                mount("mount", {"-t", "tmpfs", "-o", "size=256k,mode=777", "tmpfs", spool()});
            if (test == 3)
                QTRY_COMPARE_WITH_TIMEOUT(waiting(), 0, patienceMs);
            if (test == 3 && filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
                while (filler.write(QByteArray(4096, 'x')) > 0) {
                }
            if (test != 5)
                return;
            QTRY_COMPARE_WITH_TIMEOUT(watch->says("No space left"), 1, patienceMs);
            QVERIFY(filler.remove());
            QTRY_COMPARE_WITH_TIMEOUT(watch->says("has room again"), 1, patienceMs);
        });
        row("a share of another computer", [this](int test) {
            if (test == 0)
                mount("bindfs", {data(), logs()});
            written = data();
        });
    }

    void everyTestIsKept()
    {
        QFETCH(Step, step);
        step(0);
        if (!skipReason.isEmpty())
            QSKIP(qPrintable(std::exchange(skipReason, {})));
        start();
        for (int test = 1; test <= 4; ++test) {
            step(test);
            write(written, test);
            QTRY_VERIFY_WITH_TIMEOUT(isKept(test), patienceMs);
        }
        step(5);
        QTRY_COMPARE_WITH_TIMEOUT(stored().size(), 4, patienceMs);
        QVERIFY(watch->says("database is away") <= 1);
        QTRY_COMPARE_WITH_TIMEOUT(watch->says("database is back"), watch->says("database is away"),
                                  patienceMs);
        QVERIFY2(watch->stops(SIGINT), watch->said.constData());
    }

    /// Killed at any moment, also in the middle of a file, with the database away all the time.
    void killedAtAnyMoment()
    {
        const int tests = figures::count(20, 100);
        database = data() + "/later/attempts.sqlite";
        int kills = 0;
        start();
        for (int test = 1; test <= tests; ++test) {
            write(logs(), test);
            while (!isKept(test)) {
                if (watch->waitForFinished(QRandomGenerator::global()->bounded(100)))
                    QFAIL(watch->readAllStandardError());
                watch->kill();
                start();
                ++kills;
            }
        }
        QVERIFY(QDir().mkdir(data() + "/later"));
        QFile::setPermissions(data() + "/later", QFile::Permissions(0x7777));
        QTRY_COMPARE_WITH_TIMEOUT(stored().size(), tests, patienceMs);
        figures::print("watches killed, the database away", kills, 0);
    }

    void stopsWhileTheDatabaseIsLocked()
    {
        startWithOneTest();
        ask({"BEGIN EXCLUSIVE"});
        write(logs(), 2);
        QTRY_COMPARE_WITH_TIMEOUT(waiting(), 1, patienceMs);
        QVERIFY(watch->stops(SIGTERM));
        QCOMPARE(watch->says("wait in the spool: 1"), 1);
        ask({"COMMIT"});
        QCOMPARE(status("1 wait since"), 0);
        start();
        QTRY_COMPARE_WITH_TIMEOUT(stored().size(), 2, patienceMs);
    }

    void oneWatchForASpool()
    {
        startWithOneTest();
        const auto first = std::move(watch);
        const auto isRefused = [this](const QByteArray& why) {
            start();
            return watch->waitForFinished(patienceMs) && watch->exitCode() == 2 &&
                   watch->says(why) == 1;
        };
        QVERIFY2(isRefused("in use by another watch"), watch->said);
        database += ".other";
        QVERIFY2(isRefused("is that of the database"), watch->said);
        QVERIFY(!QFile::exists(database));
    }

    /// A log that cannot be stored although the database works stops no other.
    void setsAside()
    {
        startWithOneTest();
        QCOMPARE(status(": 0 wait\n"), 0);
        ask({"UPDATE attempts SET marks = x'00'"});
        write(logs(), 2);
        unitlogs::write(logs(), "V", unitlogs::whole(), unitlogs::noon());
        QTRY_COMPARE_WITH_TIMEOUT(stored(), QStringList({timeOf(1), timeOf(0)}), patienceMs);
        QTRY_COMPARE_WITH_TIMEOUT(watch->says("was set aside as "), 1, patienceMs);
        QCOMPARE(status("    set aside: "), 1);
        const QStringList aside = Spool::below(spool()).at(0).setAside();
        QCOMPARE(aside.size(), 1);
        QString reason;
        QCOMPARE(logfiles::read(aside[0], reason)->testedAt, timeOf(2));
        QVERIFY(!Spool::reasonFor(aside[0]).isEmpty());
        QFile::remove(aside[0]);
        QCOMPARE(status("station \"W\": newest log 2026-11-21 12:01:00"), 0);
        QFile::remove(database);
        QCOMPARE(status("away: there is no database"), 1);
    }

    /// The cost of a log does not depend on how many lie in the folder already; and of very many
    /// files the first one that is refused counts.
    void manyLogs()
    {
        constexpr int logCount = 20;
        constexpr double mostMs = 10;
        constexpr int mostLinks = 50000;
        const int oldLogs = figures::count(20000, 200000);
        write(data(), 1);
        for (int i = 0; i < oldLogs; ++i) {
            const QString source = data() + QString("/%1").arg(i / mostLinks);
            if (i % mostLinks == 0)
                QVERIFY(QFile::copy(logOf(data()), source));
            QVERIFY(link(qPrintable(source), qPrintable(logs() + QString("/%1.txt").arg(i))) == 0);
        }
        QVERIFY(QFile(logs() + "/-.txt").open(QIODevice::WriteOnly));
        QProcess import;
        import.start(yieldProgram, {"import", "--database", database, logs()});
        QVERIFY(import.waitForFinished(patienceMs));
        QCOMPARE(import.exitCode(), 1);
        QVERIFY(import.readAllStandardOutput().endsWith(", 1 refused\n"));
        QVERIFY(QFile::setPermissions(database, QFile::Permissions(0x6666)));
        start();
        QTRY_COMPARE_WITH_TIMEOUT(watch->says("not imported"), 1, patienceMs);
        const auto cpuMs = [this] {
            constexpr int userTime = 13; // in ticks of 10 ms, and the system's after it
            QFile file(QString("/proc/%1/stat").arg(watch->processId()));
            file.open(QIODevice::ReadOnly);
            const QList<QByteArray> fields = file.readAll().split(' ');
            return 10.0 * (fields.value(userTime).toInt() + fields.value(userTime + 1).toInt());
        };
        double before = 0;
        for (int test = 0; test <= logCount; ++test) {
            if (test == 1) // the folder has been imported
                before = cpuMs();
            write(logs(), test);
            QTRY_VERIFY_WITH_TIMEOUT(stored().contains(timeOf(test)), patienceMs);
        }
        const double eachMs = (cpuMs() - before) / logCount;
        figures::print(QString("logs beside %1").arg(oldLogs), logCount, 0,
                       QString("%1 ms of CPU each").arg(eachMs));
        QVERIFY(eachMs < mostMs);
    }

private:
    QString logs() const { return folder->filePath("Logs"); }
    QString data() const { return folder->filePath("data"); }
    QString spool() const { return folder->filePath("spool"); }
    static QString logOf(const QString& path) { return unitlogs::path(path, "U"); }

    static QString timeOf(int test)
    {
        return unitlogs::noon().addSecs(60 * test).toString(Qt::ISODate);
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
    void ask(const QStringList& statements)
    {
        if (!other.isValid()) {
            other = QSqlDatabase::addDatabase("QSQLITE", "other");
            other.setDatabaseName(database);
            QVERIFY(other.open());
        }
        for (const QString& statement : statements) {
            QSqlQuery query(other);
            QVERIFY(query.exec(statement));
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

    int waiting() const { return Spool::below(spool()).at(0).waiting().size(); }

    /// On a disk that the next test does not write to.
    bool isKept(int test)
    {
        QString reason;
        for (const Spool& place : Spool::below(spool()))
            for (const QString& path : place.waiting())
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
    QSqlDatabase other;
    QString database;
    QString station;
    QString written; ///< Where the station writes.
    QStringList kept;
    QStringList mounted;
    QString skipReason;
};

QTEST_GUILESS_MAIN(TestWatch)
#include "test_watch.moc"
