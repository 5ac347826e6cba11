// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/outbox.h"
#include "tests/support/figures.h"
#include "tests/yield/postgresserver.h"
#include "tests/yield/unitlogs.h"
#include "yield/store/attemptreader.h"
#include "yield/store/database.h"

#include <QCryptographicHash>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <functional>
#include <memory>

#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
constexpr int patienceMs = 30000;
constexpr uid_t nobody = 65534;

using Action = std::function<void()>;

/// A collector as it runs on a plant's computer: without root's rights, and closing its files to
/// the group where it does not see to it.
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

    QByteArray printed;

protected:
    void setupChildProcess() override
    {
        UnprivilegedProcess::setupChildProcess();
        umask(027);
    }
};

void writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
}

int shell(const QString& command)
{
    return QProcess::execute("sh", {"-c", command});
}

/// Changes the rights of a file or folder, so that the collector can or cannot use it.
void setMode(const QString& path, mode_t mode)
{
    QVERIFY(chmod(QFile::encodeName(path).constData(), mode) == 0);
}
} // namespace
Q_DECLARE_METATYPE(Action)

/// The real collector under what goes wrong in production. The working directory is each test's
/// own.
class TestCollect : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        umask(0); // the collector is another user
        qputenv("XDG_DATA_HOME", "/nonexistent");
        QCOMPARE(server.create(), QString());
    }

    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        setMode(folder->path(), 0777);
        QVERIFY(QDir::setCurrent(folder->path()) && QDir().mkdir("Logs") && QDir().mkdir("data"));
        database = "data/attempts.sqlite";
    }

    void cleanup()
    {
        collector.reset();
        QSqlDatabase::removeDatabase("other");
        shell("umount -l Logs data 2>/dev/null");
    }

    /// Each member of the group may write, whatever the umask; a sticky LOGS hands nothing down.
    void makesFolders()
    {
        if (geteuid() == 0)
            QVERIFY(chown("Logs", nobody, nobody) == 0);
        setMode("Logs", 03775);
        addLog("Logs/ZORVI_OLD.txt", "OLD");
        start();
        QTRY_COMPARE_WITH_TIMEOUT(serials(), QStringList{"OLD"}, patienceMs);
        addRun("A");
        QTRY_COMPARE_WITH_TIMEOUT(storedFiles(), 1, patienceMs);
        for (const char* path : {"Logs/Outbox", "Logs/Outbox/Stored", "Logs/Outbox/Rejected",
                                 "Logs/Outbox/Stored/2026-11"}) {
            struct stat status = {};
            QVERIFY2(lstat(path, &status) == 0, path);
            QCOMPARE(status.st_mode, mode_t{S_IFDIR | 02775});
        }
    }

    void interruptions_data()
    {
        QTest::addColumn<QString>("location");
        QTest::addColumn<Action>("interrupt");
        QTest::addColumn<Action>("mend");
        QTest::addColumn<QByteArray>("printed"); // once; empty where nobody has to know
        const QString file = "data/attempts.sqlite";
        const auto row = [&](const char* name, const QString& location, const Action& interrupt,
                             const Action& mend, const QByteArray& printed) {
            QTest::newRow(name) << location << interrupt << mend << printed;
        };
        row(
            "a reader's lock", file,
            [=] {
                sql("BEGIN");
                sql("SELECT * FROM attempts");
            },
            [=] { sql("COMMIT"); }, "");
        row(
            "newer tables", file, [=] { sql("UPDATE schema_version SET version = version + 1"); },
            [=] { sql("UPDATE schema_version SET version = version - 1"); },
            "database unavailable: ");
        row(
            "no file", file, [=] { QFile::rename(file, "away"); },
            [=] { QFile::rename("away", file); }, "database unavailable: ");
        row(
            "a full disk", file, [=] { shell("cat /dev/zero >data/filler 2>/dev/null"); },
            [=] { QFile::remove("data/filler"); }, "database unavailable: ");
        row(
            "no server", server.location(), [this] { server.stop(); },
            [this] { QVERIFY(server.start()); }, "database unavailable: ");
        row(
            "LOGS moved", file, [=] { QFile::rename("Logs", "away"); },
            [=] { QFile::rename("away", "Logs"); }, "Logs: No such file or directory");
    }

    void interruptions()
    {
        QFETCH(QString, location);
        QFETCH(Action, interrupt);
        QFETCH(Action, mend);
        QFETCH(QByteArray, printed);
        database = location;
        if (shell("mount -t tmpfs -o size=400k,mode=777 tmpfs data 2>/dev/null") != 0 &&
            QByteArray(QTest::currentDataTag()) == "a full disk")
            QSKIP("needs root");
        const QString station = QTest::currentDataTag();
        start(station);
        QTRY_VERIFY_WITH_TIMEOUT(isReady(), patienceMs);
        addRun("1 " + station);
        QTRY_COMPARE_WITH_TIMEOUT(storedFiles(), 1, patienceMs);
        interrupt();
        if (QDir("Logs").exists())
            addRun("2 " + station);
        if (!printed.isEmpty())
            QTRY_COMPARE_WITH_TIMEOUT(collector->count(printed), 1, patienceMs);
        QTest::qWait(2500); // the next tries
        mend();
        addRun("3 " + station);
        const int runs = printed.startsWith("Logs") ? 2 : 3;
        QTRY_COMPARE_WITH_TIMEOUT(storedFiles(), runs, patienceMs);
        QCOMPARE(serials(station).size(), runs);
        QCOMPARE(collector->count("unavailable"), printed.count("unavailable"));
        QTRY_COMPARE_WITH_TIMEOUT(collector->count("available again"), printed.count("unavailable"),
                                  patienceMs);
        QVERIFY(collector->count("\n") <= 8);
    }

    void share()
    {
        if (shell("bindfs data Logs 2>/dev/null") != 0)
            QSKIP("needs root and bindfs");
        database = "attempts.sqlite";
        start();
        QTRY_VERIFY_WITH_TIMEOUT(QDir("data/Outbox/Rejected").exists(), patienceMs);
        addRun("A", "data");
        QTRY_COMPARE_WITH_TIMEOUT(storedFiles("data"), 1, patienceMs);
        QCOMPARE(serials(), QStringList{"A"});
    }

    void killedAtAnyMoment_data()
    {
        QTest::addColumn<QString>("location");
        QTest::newRow("SQLite") << "data/attempts.sqlite";
        QTest::newRow("PostgreSQL") << server.location();
    }

    void killedAtAnyMoment()
    {
        QFETCH(QString, location);
        database = location;
        const QString station = QString("killed, ") + QTest::currentDataTag();
        const int runs = figures::count(200, 2000);
        QVERIFY(QDir().mkdir("Logs/Outbox"));
        QStringList expected;
        for (int run = 0; run < runs; ++run) {
            expected << QString("K%1").arg(run, 4, 10, QLatin1Char('0'));
            addRun(expected.last());
        }
        int kills = 0;
        do {
            start(station);
            ++kills;
        } while (
            !collector->waitForFinished(QRandomGenerator::global()->bounded(100 * (kills + 1))) &&
            storedFiles() < runs);
        QCOMPARE(serials(station), expected);
        figures::print("collectors killed, " + station, kills, 0);
    }

    /// Also in the middle of what does not answer: there is nothing that it had to tidy up.
    void endsAtOnce()
    {
        database = server.location();
        start("ends");
        QTRY_COMPARE_WITH_TIMEOUT(collector->count("collecting"), 1, patienceMs);
        QTest::qWait(500);
        server.signal(SIGSTOP);
        addRun("A");
        QTest::qWait(1500);
        collector->terminate();
        const bool isOver = collector->waitForFinished(2000);
        server.signal(SIGCONT);
        QVERIFY(isOver);
        QCOMPARE(storedFiles(), 0);
        start("ends");
        QTRY_COMPARE_WITH_TIMEOUT(storedFiles(), 1, patienceMs);
    }

    void twoCollectors()
    {
        start("one");
        const auto first = std::move(collector);
        start("two");
        QTRY_VERIFY_WITH_TIMEOUT(isReady(), patienceMs);
        QStringList expected;
        for (int run = 0; run < 300; ++run) {
            expected << QString("T%1").arg(run, 3, 10, QLatin1Char('0'));
            addRun(expected.last());
        }
        QTRY_COMPARE_WITH_TIMEOUT(storedFiles(), 300, patienceMs);
        QTest::qWait(1500);
        QCOMPARE(serials(), expected);
        for (RunningCollector* running : {first.get(), collector.get()}) {
            QCOMPARE(running->state(), QProcess::Running);
            QCOMPARE(running->count("pending") + running->count("rejected"), 0);
        }
    }

    /// The same run through another station's outbox.
    void knownAtAnotherStation()
    {
        QVERIFY(QDir().mkpath("Logs/Outbox") && QDir().mkpath("Copy/Outbox"));
        addRun("A");
        QCOMPARE(shell("cp Logs/Outbox/*.txt Copy/Outbox"), 0);
        QCOMPARE(collectOnce("one", "Logs").status, 0);
        const Outcome second = collectOnce("two", "Copy");
        QCOMPARE(second.status, 0);
        QVERIFY2(second.printed.contains("known at another station"), second.printed);
        QCOMPARE(serials().size(), 1);
    }

    /// Other names, links and folders are left alone; what bears a log's name and is none goes.
    void rejects()
    {
        QVERIFY(QDir().mkpath("Logs/Outbox/" + runName(1)));
        addLog("data/linked.txt", "linked");
        QVERIFY(QFile::link("../../data/linked.txt", "Logs/Outbox/" + runName(2)));
        addLog("Logs/Outbox/." + runName(3), "hidden");
        addLog("Logs/Outbox/ZORVI_copy.txt", "a person's copy");
        writeFile("Logs/Outbox/" + runName(4), "no log");
        addLog("Logs/Outbox/" + runName(5), "half");
        QVERIFY(QFile::resize("Logs/Outbox/" + runName(5), 3000));
        addLog("Logs/Outbox/" + runName(6), "A");
        const Outcome first = collectOnce();
        QCOMPARE(first.status, 1);
        QCOMPARE(first.printed.count("rejected: "), 2);
        QCOMPARE(serials(), QStringList{"A"});
        QCOMPARE(
            QDir("Logs/Outbox").entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
            QStringList({"." + runName(3), runName(1), runName(2), "Rejected", "Stored",
                         "ZORVI_copy.txt"}));
        QVERIFY(readFile("Logs/Outbox/Rejected/" + runName(4) + ".reason").contains("is no log"));
        QCOMPARE(QFileInfo("Logs/Outbox/Rejected/" + runName(5)).size(), 3000);

        // A name that was stored before never overwrites what is there.
        const QString stored = "Logs/Outbox/Stored/2026-11/" + runName(6);
        const QByteArray bytes = readFile(stored);
        addLog("Logs/Outbox/" + runName(6), "B");
        QCOMPARE(collectOnce().status, 1);
        QCOMPARE(readFile(stored), bytes);
        QVERIFY(QFile::exists("Logs/Outbox/Rejected/" + runName(6)));
        QCOMPARE(collectOnce().status, 0);
    }

    /// A log that the tables refuse stops no other.
    void refusedByTheTables()
    {
        QCOMPARE(collectOnce().status, 0);
        QVERIFY(QFile::setPermissions(database, QFile::Permissions(0x6666)));
        sql("CREATE TRIGGER strict BEFORE INSERT ON attempts WHEN new.serial = 'B' "
            "BEGIN SELECT RAISE(ABORT, 'not B'); END");
        for (const char* serial : {"A", "B", "C"})
            addRun(serial);
        QCOMPARE(collectOnce().status, 1);
        QCOMPARE(serials(), QStringList({"A", "C"}));
        QCOMPARE(QDir("Logs/Outbox/Rejected").entryList(QDir::Files).size(), 2);
    }

    /// Printed once, and tried again at growing intervals without a transaction each second.
    void staysPending()
    {
        if (geteuid() != 0)
            QSKIP("needs root");
        start();
        QTRY_VERIFY_WITH_TIMEOUT(isReady(), patienceMs);
        addLog("closed", "closed");
        setMode("closed", 0);
        QVERIFY(QFile::rename("closed", "Logs/Outbox/" + runName(1)));
        QVERIFY(QDir().mkdir("Logs/Outbox/Stored/2026-11"));
        setMode("Logs/Outbox/Stored/2026-11", 0755); // root's
        addRun("not moved");
        QTRY_COMPARE_WITH_TIMEOUT(collector->count("stays pending: "), 2, patienceMs);
        QVERIFY(opensOf(database, 7) <= 6);
        QCOMPARE(serials(), QStringList{"not moved"});
        setMode("Logs/Outbox/Stored/2026-11", 0777);
        setMode("Logs/Outbox/" + runName(1), 0444);
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
        QVERIFY2(outcome.printed.contains("Logs/Outbox is not a folder"), outcome.printed);
        QCOMPARE(
            QDir("data/Outbox").entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot).size(),
            1);
    }

    /// The empty folder of a missing mount gets no outbox at once.
    void anotherFolder()
    {
        start();
        QTRY_VERIFY_WITH_TIMEOUT(isReady(), patienceMs);
        QVERIFY(QFile::rename("Logs/Outbox", "data/archived"));
        QTRY_VERIFY_WITH_TIMEOUT(isReady(), patienceMs);
        QVERIFY(QFile::rename("Logs", "data/Logs") && QDir().mkdir("Logs"));
        addLog("Logs/ZORVI_meanwhile.txt", "meanwhile");
        QTRY_COMPARE_WITH_TIMEOUT(collector->count("another folder now"), 1, patienceMs);
        QTest::qWait(2500);
        QVERIFY(!QFile::exists("Logs/Outbox"));
        if (figures::count(0, 1) == 0)
            return;
        QTRY_COMPARE_WITH_TIMEOUT(serials(), QStringList{"meanwhile"}, 90000);
        QVERIFY(QDir("Logs/Outbox").exists());
    }

    /// Logs of before the outbox are imported once: until something was stored.
    void importsEarlierLogs()
    {
        addLog("Logs/ZORVI_1.txt", "1");
        database = "missing/attempts.sqlite";
        start();
        QTRY_COMPARE_WITH_TIMEOUT(collector->count("unavailable"), 1, patienceMs);
        QVERIFY(QDir("Logs/Outbox").exists());
        collector.reset();
        database = "data/attempts.sqlite";
        QCOMPARE(collectOnce().status, 0);
        addRun("2");
        QCOMPARE(collectOnce().status, 0);
        addLog("Logs/ZORVI_3.txt", "3");
        QCOMPARE(collectOnce().status, 0);
        QCOMPARE(serials(), QStringList({"1", "2"}));
    }

    /// The command line of version 1.2.0; what that version left in its spool is stored once.
    void formerSpool()
    {
        const auto spool = [](const QString& name, const QString& location) {
            QVERIFY(QDir().mkpath("spool/v1/" + name + "/logs"));
            const QString about = R"({"database": "%1", "station": "Spooled", "tests_18": true})";
            writeFile("spool/v1/" + name + "/about.json", about.arg(location).toUtf8());
            addLog("spool/v1/" + name + "/logs/0123", name);
        };
        spool("mine", QDir().absoluteFilePath(database));
        spool("another", "/another.sqlite");
        writeFile("spool/v1/mine/logs/89ab", "no log");
        QVERIFY(QDir().mkpath("spool/v1/mine/aside") && QDir().mkpath("spool/v1/mine/stored"));
        addLog("spool/v1/mine/aside/4567", "set aside");
        writeFile("spool/v1/mine/aside/4567.reason", "damaged");
        start("W", {"import", "--watch", "--tests-18"});
        QTRY_VERIFY_WITH_TIMEOUT(isReady(), patienceMs);
        addRun("A");
        QTRY_COMPARE_WITH_TIMEOUT(serials("W"), QStringList{"A"}, patienceMs);
        QCOMPARE(collector->count("is \"collect\" since"), 1);
        QCOMPARE(collector->count("another: 1 logs stay pending for the database"), 1);
        QCOMPARE(collector->count("not imported: "), 1);
        QCOMPARE(serials("Spooled"), QStringList({"mine", "set aside"}));
        QVERIFY(QFile::exists("spool/v1/mine/stored/0123") &&
                QFile::exists("spool/v1/mine/logs/89ab") &&
                QFile::exists("spool/v1/another/logs/0123"));
    }

    void status()
    {
        QCOMPARE(ask().status, 1); // no database, no outbox
        QCOMPARE(collectOnce().status, 0);
        QCOMPARE(ask().status, 0);
        addRun("A");
        Outcome outcome = ask();
        QVERIFY2(outcome.printed.contains("Logs/Outbox: 1 pending, oldest 20"), outcome.printed);
        QCOMPARE(outcome.status, 0);
        QCOMPARE(shell("touch -d '59 minutes ago' Logs/Outbox/*.txt"), 0);
        QCOMPARE(ask().status, 0);
        QCOMPARE(shell("touch -d '61 minutes ago' Logs/Outbox/*.txt"), 0);
        QCOMPARE(ask().status, 1);
        QCOMPARE(collectOnce().status, 0);
        outcome = ask();
        QVERIFY2(outcome.printed.contains("station \"S\": last log 2026-11-21 12:00:00"),
                 outcome.printed);
        QCOMPARE(outcome.status, 0);

        // A station that does not know the outbox; a log without a mark says nothing.
        QCOMPARE(shell("touch -d '2 minutes ago' Logs/Outbox/Stored Logs/Outbox/Stored/*/*"), 0);
        unitlogs::write("Logs/ZORVI_1.txt", "1", BandMarks());
        QCOMPARE(ask().status, 0);
        addLog("Logs/ZORVI_1.txt", "1");
        outcome = ask();
        QVERIFY2(outcome.printed.contains("restart the station"), outcome.printed);
        QCOMPARE(outcome.status, 1);
        QCOMPARE(shell("touch -d '80 seconds ago' Logs/ZORVI_1.txt"), 0);
        QCOMPARE(ask().status, 0);

        writeFile("Logs/Outbox/20261121T115830.000-0123456789abcdef-1.txt", "no log");
        QCOMPARE(collectOnce().status, 1);
        outcome = ask();
        QVERIFY2(outcome.printed.contains("1 rejected\n  rejected: 2026"), outcome.printed);
        QCOMPARE(outcome.status, 1);
    }

    /// The cost of one log does not depend on how many were stored before.
    void veryManyLogs()
    {
        const int many = figures::count(3000, 200000);
        constexpr int few = 5;
        QCOMPARE(collectOnce().status, 0);
        for (int run = 0; run < many; ++run)
            addLog(QString("Logs/Outbox/20261121T115830.000-%1-1.txt")
                       .arg(run, 16, 16, QLatin1Char('0')),
                   QString::number(run));
        QElapsedTimer time;
        time.start();
        QCOMPARE(collectOnce().status, 0);
        figures::print("logs stored at once", many, many - storedFiles(),
                       QString("%1 s").arg(0.001 * static_cast<double>(time.elapsed())));
        QCOMPARE(storedFiles(), many);
        start();
        QTest::qWait(1500);
        const double before = cpuMs();
        QTest::qWait(figures::count(2000, 60000));
        const double idleMs = cpuMs() - before;
        for (int run = 1; run <= few; ++run) {
            addRun(QString("few %1").arg(run));
            QTRY_COMPARE_WITH_TIMEOUT(storedFiles(), many + run, patienceMs);
        }
        const double eachMs = (cpuMs() - before - idleMs) / few;
        figures::print("logs one by one", few, 0,
                       QString("%1 ms of CPU each; idle %2 ms").arg(eachMs).arg(idleMs));
        QVERIFY(eachMs < 50);
    }

private:
    struct Outcome {
        int status = -1;
        QByteArray printed;
    };

    static QString runName(int digit)
    {
        return QString("20261121T115830.000-000000000000000%1-1.txt").arg(digit);
    }

    /// A log under that name, by the station's own writer.
    static void addLog(const QString& path, const QString& serial)
    {
        unitlogs::write(path, serial, unitlogs::passed());
    }

    /// One run, as the station hands it over.
    static void addRun(const QString& serial, const QString& logs = "Logs")
    {
        OutboxWriter writer(logs);
        writer.startRun();
        writer.add(unitlogs::lines(serial, unitlogs::noon(), unitlogs::passed()),
                   unitlogs::noon().addSecs(-90), false);
    }

    static QByteArray readFile(const QString& path)
    {
        QFile file(path);
        file.open(QIODevice::ReadOnly);
        return file.readAll();
    }

    QStringList options(const QString& station, const QString& logs) const
    {
        return {"--station", station, "--database", database, "--spool", "spool", logs};
    }

    void start(const QString& station = "S", const QStringList& words = {"collect"})
    {
        collector = std::make_unique<RunningCollector>();
        collector->start(ZORVI_YIELD, words + options(station, "Logs"));
    }

    static Outcome run(const QStringList& words)
    {
        RunningCollector process;
        process.start(ZORVI_YIELD, words);
        process.waitForFinished(patienceMs);
        return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
                process.readAllStandardOutput() + process.readAllStandardError()};
    }

    Outcome collectOnce(const QString& station = "S", const QString& logs = "Logs") const
    {
        return run(QStringList{"collect", "--once"} + options(station, logs));
    }

    Outcome ask() const { return run({"status", "--database", database, "Logs"}); }

    /// Whether the collector has made its folders.
    static bool isReady() { return QDir("Logs/Outbox/Rejected").exists(); }

    /// How many logs were moved.
    static int storedFiles(const QString& logs = "Logs")
    {
        int count = 0;
        QDirIterator files(logs + "/Outbox/Stored", QDir::Files, QDirIterator::Subdirectories);
        for (; files.hasNext(); files.next())
            ++count;
        return count;
    }

    /// Of the attempts that the database has, each as often as it has it; of all stations without a
    /// name. Empty while it is unavailable.
    QStringList serials(const QString& station = {}) const
    {
        QStringList found;
        try {
            Database reading(database, Database::Access::Read);
            attemptreader::forEachByUnit(reading, [&](const Attempt& attempt) {
                if (station.isEmpty() || attempt.station == station)
                    found << attempt.serial;
            });
        } catch (const DatabaseError&) {
            return {};
        }
        return found;
    }

    /// On another connection, to the SQLite file.
    void sql(const QString& statement) const
    {
        auto other = QSqlDatabase::database("other", false);
        if (!other.isValid()) {
            other = QSqlDatabase::addDatabase("QSQLITE", "other");
            other.setDatabaseName(database);
        }
        QSqlQuery query(QSqlDatabase::database("other"));
        QVERIFY2(query.exec(statement), qPrintable(query.lastError().text()));
        query.next();
    }

    /// How often a file is opened within that time.
    static int opensOf(const QString& path, int seconds)
    {
        const int events = inotify_init1(IN_NONBLOCK);
        inotify_add_watch(events, QFile::encodeName(path).constData(), IN_OPEN);
        QTest::qWait(1000 * seconds);
        std::array<char, 1 << 16> buffer{};
        const ssize_t size = read(events, buffer.data(), buffer.size());
        close(events);
        return size < 0 ? 0
                        : static_cast<int>(static_cast<std::size_t>(size) / sizeof(inotify_event));
    }

    /// The collector's processor time so far.
    double cpuMs() const
    {
        return readFile(QString("/proc/%1/schedstat").arg(collector->processId()))
                   .split(' ')[0]
                   .toDouble() /
               1e6;
    }

    PostgresServer server;
    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<RunningCollector> collector;
    QString database;
};

QTEST_GUILESS_MAIN(TestCollect)
#include "test_collect.moc"
