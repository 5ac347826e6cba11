// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/outbox.h"
#include "tests/support/figures.h"
#include "tests/yield/postgresserver.h"
#include "tests/yield/unitlogs.h"
#include "yield/store/attemptreader.h"
#include "yield/store/database.h"

#include <QDirIterator>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <memory>

#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

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
int storedFiles(const QString& logs = "Logs")
{
    int count = 0;
    QDirIterator files(logs + "/Outbox/Stored", QDir::Files, QDirIterator::Subdirectories);
    for (; files.hasNext(); files.next())
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

/// How often a file is opened within that time.
int opensOf(const QString& path, int seconds)
{
    const int events = inotify_init1(IN_NONBLOCK);
    inotify_add_watch(events, QFile::encodeName(path).constData(), IN_OPEN | IN_CLOSE);
    QTest::qWait(1000 * seconds);
    std::array<char, 1 << 16> buffer{};
    const ssize_t size = read(events, buffer.data(), buffer.size());
    close(events);
    constexpr int eventsOfOne = 2 * sizeof(inotify_event); // the kernel joins equal ones in a row
    return size < 0 ? 0 : static_cast<int>(size) / eventsOfOne;
}
} // namespace

/// The real collector under what goes wrong in production. The working directory is each test's
/// own. tests/reliability kills it at random.
class TestCollect : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { umask(0); } // the collector is another user

    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        QVERIFY(QFile::setPermissions(folder->path(), QFile::Permissions(0x7777)));
        QVERIFY(QDir::setCurrent(folder->path()) && QDir().mkdir("Logs") && QDir().mkdir("data"));
        database = "data/attempts.sqlite";
    }

    void cleanup()
    {
        collector.reset();
        shell("umount -l Logs data 2>/dev/null");
    }

    /// Each member of the group may write, whatever the umask; a sticky LOGS hands nothing down.
    void makesFolders()
    {
        QCOMPARE(shell("chown 65534:65534 Logs 2>/dev/null; chmod 3775 Logs"), 0);
        start();
        storeRun("A");
        QCOMPARE(shell("[ \"$(find Logs/Outbox -type d -perm 2775 | wc -l)\" = 4 ]"), 0);
    }

    void interruptions_data()
    {
        QTest::addColumn<QString>("interrupt"); // in the shell
        QTest::addColumn<QString>("mend");
        QTest::addColumn<QByteArray>("printed"); // once
        const QByteArray unavailable = "database unavailable: ";
        QTest::newRow("newer tables")
            << sql("UPDATE schema_version SET version = version + 1")
            << sql("UPDATE schema_version SET version = version - 1") << unavailable;
        QTest::newRow("no file") << "mv data/attempts.sqlite ."
                                 << "mv attempts.sqlite data" << unavailable;
        QTest::newRow("a full disk") << "mountpoint -q data && ! cat /dev/zero >data/filler"
                                     << "rm data/filler" << unavailable;
        QTest::newRow("LOGS moved")
            << "mv Logs away"
            << "mv away Logs" << QByteArray("Logs: No such file or directory");
    }

    void interruptions()
    {
        QFETCH(QString, interrupt);
        QFETCH(QString, mend);
        QFETCH(QByteArray, printed);
        shell("mount -t tmpfs -o size=400k,mode=777 tmpfs data 2>/dev/null");
        start();
        storeRun("1");
        if (shell(interrupt + " 2>/dev/null") != 0)
            QSKIP("needs root");
        addRun("2", QDir("Logs").exists() ? "Logs" : "away");
        QTRY_COMPARE_WITH_TIMEOUT(collector->count(printed), 1, patienceMs);
        QTest::qWait(2100); // the next try
        QCOMPARE(shell(mend), 0);
        QTRY_COMPARE_WITH_TIMEOUT(storedFiles(), 2, patienceMs);
        QCOMPARE(serials(), QStringList({"1", "2"}));
        QTRY_COMPARE_WITH_TIMEOUT(collector->count("available again"), printed.count("database"),
                                  patienceMs);
        QCOMPARE(collector->count(printed), 1);
    }

    /// Ends at once in the middle of what does not answer: there is nothing to tidy up.
    void server()
    {
        PostgresServer server;
        QCOMPARE(server.create(), QString());
        database = server.location();
        start();
        storeRun("1");
        server.signal(SIGSTOP);
        addRun("2");
        QTest::qWait(1500);
        collector->terminate();
        const bool isOver = collector->waitForFinished(2000);
        server.signal(SIGCONT);
        QVERIFY(isOver);
        QCOMPARE(collectOnce().status, 0);
        QCOMPARE(serials(), QStringList({"1", "2"}));
    }

    void share()
    {
        if (shell("bindfs data Logs 2>/dev/null") != 0)
            QSKIP("needs root and bindfs");
        database = "attempts.sqlite";
        start();
        storeRun("A", "data");
        QCOMPARE(serials(), QStringList{"A"});
    }

    /// Of one outbox; and the same run through two outboxes.
    void twoCollectors()
    {
        QVERIFY(QDir().mkdir("Logs/Outbox"));
        QStringList expected;
        for (int run = 100; run < 400; ++run) {
            expected << QString::number(run);
            addRun(expected.last());
        }
        start("one");
        const auto first = std::move(collector);
        start("two");
        QTRY_COMPARE_WITH_TIMEOUT(storedFiles(), expected.size(), patienceMs);
        QTest::qWait(1000);
        QCOMPARE(serials(), expected);
        for (RunningCollector* running : {first.get(), collector.get()}) {
            QCOMPARE(running->state(), QProcess::Running);
            QCOMPARE(running->count("pending") + running->count("rejected"), 0);
        }
        QCOMPARE(shell("mkdir -p Copy/Outbox && cp Logs/Outbox/Stored/*/* Copy/Outbox"), 0);
        const Outcome copy = collectOnce("three", "Copy");
        QCOMPARE(copy.status, 0);
        QVERIFY2(copy.printed.contains("known at another station"), copy.printed);
        QCOMPARE(serials(), expected);
    }

    /// Other names, links and folders are left alone. What has a log's name and is none, what the
    /// tables refuse, and a copy of a stored log are rejected, and stop no other.
    void rejects()
    {
        QCOMPARE(collectOnce().status, 0);
        QCOMPARE(shell("chmod 666 data/attempts.sqlite; " +
                       sql("CREATE TRIGGER strict BEFORE INSERT ON attempts WHEN new.serial = 'B' "
                           "BEGIN SELECT RAISE(ABORT, 'not B'); END")),
                 0);
        addLog("data/linked.txt", "linked");
        addLog("Logs/Outbox/." + runName(3), "hidden");
        addLog("Logs/Outbox/ZORVI_copy.txt", "a user's copy");
        addLog("Logs/Outbox/" + runName(6), "A");
        addLog("Logs/Outbox/" + runName(7), "B");
        QCOMPARE(shell("cd Logs/Outbox && mkdir " + runName(1) +
                       " && ln -s ../../data/linked.txt " + runName(2) + " && echo no log >" +
                       runName(4) + " && head -c 3000 " + runName(6) + " >" + runName(5)),
                 0);
        const Outcome outcome = collectOnce();
        QCOMPARE(outcome.status, 1);
        QCOMPARE(outcome.printed.count("rejected: "), 3);
        QCOMPARE(serials(), QStringList{"A"});
        const auto all = QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot;
        QCOMPARE(QDir("Logs/Outbox").entryList(all),
                 QStringList({"." + runName(3), runName(1), runName(2), "Rejected", "Stored",
                              "ZORVI_copy.txt"}));
        QCOMPARE(shell("cd Logs/Outbox/Rejected && grep -q 'is no log' " + runName(4) +
                       ".reason && [ $(stat -c %s " + runName(5) + ") = 3000 ]"),
                 0);

        addLog("Logs/Outbox/" + runName(6), "C");
        QCOMPARE(collectOnce().status, 1);
        QCOMPARE(shell("cd Logs/Outbox && grep -q '#A' Stored/*/*6-1.txt && "
                       "grep -q '#C' Rejected/*6-1.txt"),
                 0);
        QCOMPARE(collectOnce().status, 0);
    }

    /// Printed once, and tried again at growing intervals without a transaction each second.
    void staysPending()
    {
        if (geteuid() != 0)
            QSKIP("needs root");
        start();
        addLog("closed", "closed");
        QCOMPARE(shell("until [ -d Logs/Outbox/Stored ]; do sleep 0.1; done; chmod 0 closed; "
                       "mv closed Logs/Outbox/" +
                       runName(1) + "; mkdir -m 755 Logs/Outbox/Stored/2026-11"),
                 0);
        addRun("not moved");
        addLog("Logs/Outbox/" + runName(1), "closed");
        QCOMPARE(shell("chmod 0 Logs/Outbox/" + runName(1)), 0);
        start();
        QTRY_COMPARE_WITH_TIMEOUT(collector->count("stays pending: "), 2, patienceMs);
        QVERIFY(opensOf(database, 4) <= 2);
        QCOMPARE(serials(), QStringList{"not moved"});
        QCOMPARE(shell("chmod 777 Logs/Outbox/Stored/2026-11 Logs/Outbox/*.txt"), 0);
        QTRY_COMPARE_WITH_TIMEOUT(storedFiles(), 2, patienceMs);
        QCOMPARE(serials(), QStringList({"closed", "not moved"}));
        QCOMPARE(collector->count("stays pending: "), 2);
    }

    /// Who may write to LOGS must not lead the collector elsewhere.
    void followsNoLink()
    {
        QVERIFY(QDir().mkdir("data/Outbox") && QFile::link("../data/Outbox", "Logs/Outbox"));
        addRun("A", "data");
        const Outcome outcome = collectOnce();
        QCOMPARE(outcome.status, 2);
        QVERIFY2(outcome.printed.contains("Logs/Outbox: it is not a folder"), outcome.printed);
        QCOMPARE(QDir("data/Outbox").entryList(QDir::AllEntries | QDir::NoDotAndDotDot).size(), 1);
    }

    /// The empty folder of a missing mount gets no outbox at once.
    void anotherFolder()
    {
        start();
        storeRun("A");
        QCOMPARE(shell("mv Logs data && mkdir Logs"), 0);
        addLog("Logs/ZORVI_meanwhile.txt", "meanwhile");
        QTRY_COMPARE_WITH_TIMEOUT(collector->count("is missing; it is made in a minute"), 1,
                                  patienceMs);
        QTest::qWait(1500);
        QVERIFY(!QFile::exists("Logs/Outbox"));
        if (figures::count(0, 1) == 0)
            return;
        QTRY_COMPARE_WITH_TIMEOUT(serials(), QStringList({"A", "meanwhile"}), 90000);
        QVERIFY(QDir("Logs/Outbox").exists());
    }

    /// The logs of before the outbox are imported once: also if the collector was killed after it
    /// had made the outbox, and not again later.
    void importsEarlierLogs()
    {
        addLog("Logs/ZORVI_1.txt", "1");
        database = "missing/attempts.sqlite";
        QCOMPARE(collectOnce().status, 2);
        QVERIFY(QDir("Logs/Outbox").exists() && !QDir("Logs/Outbox/Stored").exists());
        database = "data/attempts.sqlite";
        addRun("2");
        QCOMPARE(collectOnce().status, 0);
        addLog("Logs/ZORVI_3.txt", "3");
        QCOMPARE(collectOnce().status, 0);
        QCOMPARE(serials(), QStringList({"1", "2"}));
    }

    /// The command line of version 1.2.0; what that version left in its spool is imported.
    void formerSpool()
    {
        for (const QString name : {"mine", "another"}) {
            const QString path = "spool/v1/" + name + '/';
            QVERIFY(QDir().mkpath(path + "logs") && QDir().mkpath(path + "aside"));
            addLog(path + "logs/0123", name);
            addLog(path + "aside/4567", name + ", aside");
            QFile about(path + "about.json");
            QVERIFY(about.open(QIODevice::WriteOnly));
            const QString location = name == "mine" ? QDir().absoluteFilePath(database) : "/x";
            const QString text = R"({"database": "%1", "station": "W", "tests_18": true})";
            about.write(text.arg(location).toUtf8());
        }
        QCOMPARE(shell("echo damaged >spool/v1/mine/aside/4567.reason; "
                       "echo no log >spool/v1/mine/logs/89ab"),
                 0);
        QVERIFY(QDir().mkpath("Logs/Outbox/Stored")); // of a collector that had another spool
        start("W", {"import", "--watch", "--tests-18"});
        storeRun("A");
        QCOMPARE(serials(), QStringList({"A", "mine", "mine, aside"}));
        QCOMPARE(collector->count("is \"collect\" since"), 1);
        QCOMPARE(collector->count("another: not imported: its logs are for the database /x"), 1);
        QCOMPARE(collector->count("mine/logs/89ab: not imported: "), 1);
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
        QVERIFY(QDir().mkdir("Logs/Outbox"));
        addRun("A");
        QCOMPARE(collectOnce().status, 0);
        addLog("log", "B");
        unitlogs::write("empty", "B", BandMarks());
        QCOMPARE(shell(change), 0);
        const Outcome outcome = run({"status", "--database", database, "Logs"});
        QVERIFY2(outcome.printed.contains(printed), outcome.printed);
        QTEST(outcome.status, "status");
    }

private:
    struct Outcome {
        int status = -1;
        QByteArray printed;
    };

    static Outcome run(const QStringList& words)
    {
        RunningCollector process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(ZORVI_YIELD, words);
        process.waitForFinished(patienceMs);
        return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
                process.readAll()};
    }

    QStringList options(const QString& station, const QString& logs) const
    {
        return {"--station", station, "--database", database, "--spool", "spool", logs};
    }

    Outcome collectOnce(const QString& station = "S", const QString& logs = "Logs") const
    {
        return run(QStringList{"collect", "--once"} + options(station, logs));
    }

    void start(const QString& station = "S", const QStringList& words = {"collect"})
    {
        collector = std::make_unique<RunningCollector>();
        collector->start(ZORVI_YIELD, words + options(station, "Logs"));
    }

    /// Hands a run to the collector that was started, and waits until it is stored.
    static void storeRun(const QString& serial, const QString& logs = "Logs")
    {
        QTRY_VERIFY_WITH_TIMEOUT(QDir(logs + "/Outbox/Stored").exists(), patienceMs);
        addRun(serial, logs);
        QTRY_COMPARE_WITH_TIMEOUT(storedFiles(logs), 1, patienceMs);
    }

    /// Of the attempts that the database has, each as often as it has it. Empty while it is
    /// unavailable.
    QStringList serials() const
    {
        QStringList found;
        try {
            Database reading(database, Database::Access::Read);
            attemptreader::forEachByUnit(
                reading, [&found](const Attempt& attempt) { found << attempt.serial; });
        } catch (const DatabaseError&) {
            return {};
        }
        return found;
    }

    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<RunningCollector> collector;
    QString database;
};

QTEST_GUILESS_MAIN(TestCollect)
#include "test_collect.moc"
