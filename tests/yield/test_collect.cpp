// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/outbox.h"
#include "tests/yield/testdatabase.h"
#include "tests/yield/unitlogs.h"

#include <QDirIterator>

#include <sys/stat.h>

namespace
{
constexpr int patienceMs = 30000;

/// A collector as it runs on a plant's computer: without root's rights, its files closed to others.
class RunningCollector : public UnprivilegedProcess
{
public:
    ~RunningCollector() override
    {
        kill();
        waitForFinished(patienceMs);
    }

    /// How often it printed that, on either stream.
    int count(const QByteArray& text)
    {
        printed += readAllStandardOutput() + readAllStandardError();
        return printed.count(text);
    }

protected:
    void setupChildProcess() override
    {
        UnprivilegedProcess::setupChildProcess();
        umask(027);
    }

private:
    QByteArray printed;
};

/// 0 if the command succeeded.
int shell(const QString& command)
{
    return QProcess::execute("sh", {"-c", command});
}

/// A log under that name, by the station's own writer.
void addLog(const QString& path, const QString& serial)
{
    unitlogs::write(path, serial, unitlogs::passed());
}

/// One run, as the station hands it over.
void addRun(const QString& serial, const QString& logs = "Logs")
{
    OutboxWriter writer(logs);
    writer.startRun();
    writer.add(unitlogs::lines(serial, unitlogs::noon(), unitlogs::passed()),
               unitlogs::noon().addSecs(-90), false);
}

/// A name in the outbox.
QString runName(int digit)
{
    return QString("20261121T115830.000-000000000000000%1-1.txt").arg(digit);
}

/// How many logs were moved.
int storedFiles()
{
    int count = 0;
    for (QDirIterator files("Logs/Outbox/Stored", QDir::Files, QDirIterator::Subdirectories);
         files.hasNext(); files.next())
        ++count;
    return count;
}

/// A command of the shell that changes attempts.sqlite.
QString sql(const QString& statement)
{
    return "python3 -c \"import sqlite3; sqlite3.connect('data/attempts.sqlite', "
           "isolation_level=None).execute('''" +
           statement + "''')\"";
}

/// What a command printed, and its exit status.
struct Outcome {
    int status = -1;
    QByteArray printed;
};

Outcome run(const QStringList& words)
{
    RunningCollector process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(ZORVI_YIELD, words);
    process.waitForFinished(patienceMs);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            process.readAll()};
}

/// A station's computer: the folders Logs and data in the working directory, and a collector.
class Line
{
public:
    Line()
    {
        QFile::setPermissions(folder.path(), QFile::Permissions(0x7777));
        enter();
        QDir().mkdir("Logs");
        QDir().mkdir("data");
    }

    ~Line()
    {
        enter();
        collector.reset();
        shell("umount -l data 2>/dev/null");
    }

    void enter() const { QDir::setCurrent(folder.path()); }

    Outcome collectOnce() const { return run(QStringList{"collect", "--once"} + options()); }

    void start(const QStringList& words = {"collect"})
    {
        collector = std::make_unique<RunningCollector>();
        collector->setWorkingDirectory(folder.path());
        collector->start(ZORVI_YIELD, words + options());
    }

    /// Of the attempts in the database, each as often as it is there. Empty while it is
    /// unavailable.
    QStringList serials() const
    {
        try {
            Database reading(database, Database::Access::Read);
            return testdatabase::linesOf(reading, "SELECT serial FROM attempts");
        } catch (const DatabaseError&) {
            return {};
        }
    }

    QString database = "data/attempts.sqlite";
    std::unique_ptr<RunningCollector> collector;

private:
    QStringList options() const
    {
        return {"--station", "S", "--database", database, "--spool", "spool", "Logs"};
    }

    QTemporaryDir folder;
};
} // namespace

/// The real collector under what goes wrong in production. tests/reliability kills it at random.
class TestCollect : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { umask(0); } // the collector is another user

    void init() { line = std::make_unique<Line>(); }

    void cleanup() { line.reset(); }

    /// Each member of the group may write, whatever the umask; a sticky LOGS hands nothing down.
    void makesFolders()
    {
        QCOMPARE(shell("chown 65534:65534 Logs 2>/dev/null; chmod 3775 Logs"), 0);
        line->start();
        QTRY_VERIFY_WITH_TIMEOUT(QDir("Logs/Outbox/Stored").exists(), patienceMs);
        addRun("A");
        QTRY_COMPARE_WITH_TIMEOUT(storedFiles(), 1, patienceMs);
        QCOMPARE(shell("[ \"$(find Logs/Outbox -type d -perm 2775 | wc -l)\" = 4 ]"), 0);
    }

    /// Each at a line of its own, all at the same time: they wait for the next try.
    void interruptions()
    {
        struct Interruption {
            QString interrupt; // in the shell
            QString mend;
            QByteArray printed; // once
            Line line = {};
        };
        const QByteArray unavailable = "database unavailable: ";
        std::array<Interruption, 5> all{
            {{sql("UPDATE schema_version SET version = version + 1"),
              sql("UPDATE schema_version SET version = version - 1"), unavailable},
             {"mv data/attempts.sqlite .", "mv attempts.sqlite data", unavailable},
             {"mv Logs away", "mv away Logs", "Logs: No such file or directory"},
             // The empty folder of a missing mount gets no outbox at once.
             {"mv Logs away && mkdir Logs", "rmdir Logs && mv away Logs",
              "is missing; it is made in a minute"},
             {"mount -t tmpfs -o size=400k,mode=777 tmpfs data && ! cat /dev/zero >data/filler",
              "umount data", unavailable}}};
        for (Interruption& each : all) {
            each.line.enter();
            QDir().mkdir("Logs/Outbox");
            addRun("1");
            each.line.start();
            QTRY_COMPARE_WITH_TIMEOUT(storedFiles(), 1, patienceMs);
            QCOMPARE(shell("(" + each.interrupt + ") 2>/dev/null"), 0);
            addRun("2", QDir("Logs/Outbox").exists() ? "Logs" : "away");
        }
        for (Interruption& each : all)
            QTRY_COMPARE_WITH_TIMEOUT(each.line.collector->count(each.printed), 1, patienceMs);
        QTest::qWait(2100); // the next try
        for (const Interruption& each : all) {
            each.line.enter();
            QCOMPARE(shell(each.mend), 0);
        }
        for (Interruption& each : all) {
            each.line.enter();
            QTRY_COMPARE_WITH_TIMEOUT(storedFiles(), 2, patienceMs);
            QCOMPARE(each.line.serials(), QStringList({"1", "2"}));
            QTRY_COMPARE_WITH_TIMEOUT(each.line.collector->count("available again"),
                                      each.printed.count("database"), patienceMs);
            QCOMPARE(each.line.collector->count(each.printed), 1);
        }
    }

    /// Other names, links and folders are left alone. What has a log's name and is none, what the
    /// tables refuse, and a copy of a stored log are rejected, and stop no other.
    void rejects()
    {
        QCOMPARE(line->collectOnce().status, 0);
        QCOMPARE(shell("chmod 666 data/attempts.sqlite; " +
                       sql("CREATE TRIGGER strict BEFORE INSERT ON attempts WHEN new.serial = 'B' "
                           "BEGIN SELECT RAISE(ABORT, 'not B'); END")),
                 0);
        addLog("log", "a user's");
        addLog("Logs/Outbox/" + runName(5), "A");
        addLog("Logs/Outbox/" + runName(6), "B");
        QCOMPARE(shell("cd Logs/Outbox && mkdir " + runName(1) + " && ln -s ../../log " +
                       runName(2) + " && cp ../../log ." + runName(3) +
                       " && cp ../../log copy.txt && echo no log >" + runName(4)),
                 0);
        const Outcome outcome = line->collectOnce();
        QCOMPARE(outcome.status, 1);
        QCOMPARE(outcome.printed.count("rejected: "), 2);
        QCOMPARE(line->serials(), QStringList{"A"});
        addLog("Logs/Outbox/" + runName(5), "C");
        QCOMPARE(line->collectOnce().status, 1);
        QCOMPARE(shell("cd Logs/Outbox && [ $(ls -A | wc -l) = 6 ] && [ -d " + runName(1) +
                       " ] && [ -L " + runName(2) +
                       " ] && grep -q 'is no log' Rejected/*4-1.txt.reason && "
                       "grep -q '#B' Rejected/*6-1.txt && grep -q '#A' Stored/*/*5-1.txt && "
                       "grep -q '#C' Rejected/*5-1.txt"),
                 0);
        QCOMPARE(line->collectOnce().status, 0);
    }

    /// Printed once, however often it is tried again.
    void staysPending()
    {
        if (geteuid() != 0)
            QSKIP("needs root");
        QCOMPARE(line->collectOnce().status, 0);
        addRun("not moved");
        addLog("Logs/Outbox/" + runName(1), "closed");
        QCOMPARE(shell("chmod 0 Logs/Outbox/" + runName(1) +
                       "; mkdir -m 755 Logs/Outbox/Stored/2026-11"),
                 0);
        line->start();
        QTRY_COMPARE_WITH_TIMEOUT(line->collector->count("stays pending: "), 2, patienceMs);
        QTest::qWait(2100); // the next try
        QCOMPARE(line->serials(), QStringList{"not moved"});
        QCOMPARE(shell("chmod 777 Logs/Outbox/Stored/2026-11 Logs/Outbox/*.txt"), 0);
        QTRY_COMPARE_WITH_TIMEOUT(storedFiles(), 2, patienceMs);
        QCOMPARE(line->serials(), QStringList({"closed", "not moved"}));
        QCOMPARE(line->collector->count("stays pending: "), 2);
    }

    /// Who may write to LOGS must not lead the collector elsewhere.
    void followsNoLink()
    {
        QVERIFY(QDir().mkdir("data/Outbox") && QFile::link("../data/Outbox", "Logs/Outbox"));
        addRun("A", "data");
        const Outcome outcome = line->collectOnce();
        QCOMPARE(outcome.status, 2);
        QVERIFY2(outcome.printed.contains("Logs/Outbox: it is not a folder"), outcome.printed);
        QCOMPARE(QDir("data/Outbox").entryList(QDir::AllEntries | QDir::NoDotAndDotDot).size(), 1);
    }

    /// A folder that may be listed but not entered is not taken for an empty one.
    void closedFolder()
    {
        if (geteuid() != 0)
            QSKIP("needs root");
        addLog("Logs/log", "A");
        QCOMPARE(shell("chmod 744 Logs"), 0);
        const Outcome outcome = run({"import", "--database", line->database, "Logs"});
        QVERIFY2(outcome.printed.startsWith("Logs: not imported: the folder cannot be read\n"),
                 outcome.printed);
        QCOMPARE(outcome.status, 1);
    }

    /// The logs of before the outbox are imported once: also if the collector was killed after it
    /// had made the outbox, and not again later.
    void importsEarlierLogs()
    {
        addLog("Logs/ZORVI_1.txt", "1");
        run({"import", "--database", line->database, "nothing"}); // makes the tables
        QCOMPARE(shell(sql("ALTER TABLE repeated_saves RENAME TO away")), 0);
        QCOMPARE(line->collectOnce().status, 2);
        QVERIFY(QDir("Logs/Outbox").exists() && !QDir("Logs/Outbox/Stored").exists());
        QCOMPARE(shell(sql("ALTER TABLE away RENAME TO repeated_saves")), 0);
        addRun("2");
        QCOMPARE(line->collectOnce().status, 0);
        addLog("Logs/ZORVI_3.txt", "3");
        QCOMPARE(line->collectOnce().status, 0);
        QCOMPARE(line->serials(), QStringList({"1", "2"}));
    }

    /// The command line of version 1.2.0; what that version left in its spool is imported.
    void formerSpool()
    {
        const QString location = QFileInfo(line->database).absoluteFilePath();
        QCOMPARE(shell("mkdir -p spool/v1/mine/logs spool/v1/mine/aside Logs/Outbox/Stored; "
                       "cd spool/v1/mine; echo no log >logs/89ab; echo damaged >aside/4567.reason; "
                       "echo '{\"database\": \"" +
                       location + "\", \"station\": \"S\"}' >about.json"),
                 0);
        addLog("spool/v1/mine/logs/0123", "pending");
        addLog("spool/v1/mine/aside/4567", "set aside");
        addRun("A");
        line->start({"import", "--watch", "--tests-18"});
        QTRY_COMPARE_WITH_TIMEOUT(storedFiles(), 1, patienceMs);
        QCOMPARE(line->serials(), QStringList({"A", "pending", "set aside"}));
        for (const char* printed : {"is \"collect\" since", "mine/logs/89ab: not imported: "})
            QTRY_COMPARE_WITH_TIMEOUT(line->collector->count(printed), 1, patienceMs);
    }

    void status_data()
    {
        QTest::addColumn<QString>("change"); // in the shell
        QTest::addColumn<QByteArray>("printed");
        QTest::addColumn<int>("status");
        const auto row = [](const QString& change, const QByteArray& printed, int status) {
            QTest::newRow(qPrintable(change)) << change << printed << status;
        };
        const QString age = "find Logs/Outbox -exec touch -d '2 minutes ago' {} +; ";
        const QString pend = "cp log Logs/Outbox/" + runName(1) + "; ";
        row(":", "station \"S\": last log 2026-11-21 12:00:00\noutbox Logs/Outbox: 0 pending, 0 ",
            0);
        row("rm -r Logs/Outbox", "outbox Logs/Outbox: missing", 1);
        row("rm data/attempts.sqlite", "unavailable: ", 1);
        row(pend + "touch -d '59 minutes ago' Logs/Outbox/*.txt", ": 1 pending, oldest 20", 0);
        row(pend + "touch -d '61 minutes ago' Logs/Outbox/*.txt", "1 pending", 1);
        row("cp log Logs/Outbox/Rejected/" + runName(1), "1 rejected\n", 1);
        // A station that does not know the outbox; a log without a mark is no sign of it.
        row(age + "cp log Logs", "restart the station", 1);
        row(age + "cp empty Logs", "0 pending", 0);
        row(age + "cp log Logs; touch -d '80 seconds ago' Logs/log", "0 pending", 0);
    }

    void status()
    {
        QFETCH(QString, change);
        QFETCH(QByteArray, printed);
        QCOMPARE(line->collectOnce().status, 0);
        addRun("A");
        QCOMPARE(line->collectOnce().status, 0);
        addLog("log", "B");
        unitlogs::write("empty", "B", BandMarks());
        QCOMPARE(shell(change), 0);
        const Outcome outcome = run({"status", "--database", line->database, "Logs"});
        QVERIFY2(outcome.printed.contains(printed), outcome.printed);
        QTEST(outcome.status, "status");
    }

private:
    std::unique_ptr<Line> line;
};

QTEST_GUILESS_MAIN(TestCollect)
#include "test_collect.moc"
