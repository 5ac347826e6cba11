// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/support/figures.h"
#include "tests/yield/postgresserver.h"
#include "tests/yield/storedrows.h"
#include "tests/yield/unitlogs.h"
#include "yield/store/attemptreader.h"
#include "yield/store/attemptstore.h"
#include "yield/store/database.h"
#include "yield/store/schema.h"

#include <QDir>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <array>
#include <numeric>

using unitlogs::abortedAt;
using unitlogs::log;
using unitlogs::passed;
using unitlogs::passedWith18;
using unitlogs::without;

namespace
{
/// A log as it comes from a station.
struct Fact {
    Station station;
    LogFile file;
};

Fact imported(const QString& station, const StationLog& log)
{
    return {{station}, {log}};
}

OutboxName nameOf(int run, int save)
{
    return {QString("20261121T115900.000-%1").arg(run, 16, 16, QChar('0')), save};
}

Fact saved(const QString& station, int run, int save, const StationLog& log)
{
    return {{station}, {log, nameOf(run, save)}};
}

Fact savedByTarvek(const QString& station, int run, int save, const StationLog& log)
{
    Fact fact = saved(station, run, save, log);
    fact.file.name->isTarvek = true;
    return fact;
}

StoreCounts store(Database& database, const Fact& fact)
{
    return attemptstore::store(database, fact.station, {fact.file});
}

QString kindOfError(const std::function<void()>& act)
{
    try {
        act();
    } catch (const DatabaseError& error) {
        const char* kinds[] = {"unusable", "newer", "unavailable", "data"};
        return QString("%1: %2").arg(kinds[static_cast<int>(error.kind())], error.text());
    }
    return "none";
}
} // namespace

using Facts = std::vector<Fact>;
Q_DECLARE_METATYPE(Facts)

/// Every test with an empty database of both kinds; with the real program where processes matter.
class TestStore : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase_data()
    {
        QTest::addColumn<bool>("isServer");
        QTest::newRow("SQLite") << false;
        QTest::newRow("PostgreSQL") << true;
    }

    void initTestCase()
    {
        QCOMPARE(server.create(), QString());
        writeLogs();
        const QString expected = folder.filePath("expected");
        QVERIFY2(import(expected, "S", logPaths), "no import");
        Database database(expected, Database::Access::Read);
        expectedRows = storedrows::all(database);
        QVERIFY(expectedRows.size() > unitCount);
    }

    void init()
    {
        location = folder.filePath(QString("store%1").arg(++databases));
        if (!isServer())
            return;
        location = server.location();
        Database old(location, Database::Access::Write);
        Statement(old, "DROP SCHEMA public CASCADE").run();
        Statement(old, "CREATE SCHEMA public").run();
    }

    void anyOrder_data()
    {
        QTest::addColumn<Facts>("facts");
        QTest::addColumn<QStringList>("rows");
        const StationLog begun = log("x", 0, abortedAt(20));
        const StationLog whole = log("y", 5, passed());
        const auto row = [](const char* name, const Facts& facts, const QStringList& rows) {
            QTest::newRow(name) << facts << rows;
        };
        row("saves of a run, its serial corrected",
            {saved("S", 1, 1, begun), saved("S", 1, 2, whole),
             saved("S", 1, 3, log("y", 9, without(passed(), 3, 5)))},
            {"S: x at 12:00, 137 marks, repeated, save 1 of run 1",
             "S: y at 12:05, 227 marks, repeated, save 2 of run 1",
             "S: y at 12:09, 226 marks, failed, save 3 of run 1, missed 3:5"});
        row("imported logs that are saves of a run",
            {saved("S", 1, 1, begun), saved("S", 1, 2, whole), imported("S", begun),
             imported("S", whole), imported("R", whole)},
            {"S: x at 12:00, 137 marks, repeated, save 1 of run 1",
             "S: y at 12:05, 227 marks, passed, save 2 of run 1"});
        row("a run by the names of two stations",
            {saved("S", 1, 1, begun), saved("S", 1, 2, whole), saved("R", 1, 1, begun),
             saved("R", 1, 2, whole), imported("Q", begun)},
            {"R: x at 12:00, 137 marks, repeated, save 1 of run 1",
             "R: y at 12:05, 227 marks, passed, save 2 of run 1"});
        row("two saves in one second",
            {saved("S", 1, 1, whole), saved("S", 1, 2, whole), saved("S", 1, 3, begun),
             saved("S", 1, 4, whole)},
            {"S: x at 12:00, 137 marks, repeated, save 3 of run 1",
             "S: y at 12:05, 227 marks, passed, save 4 of run 1"});
        row("the same log of two stations",
            {imported("S", whole), imported("R", whole), imported("S", begun)},
            {"R: y at 12:05, 227 marks, passed", "S: x at 12:00, 137 marks, aborted at 20",
             "S: y at 12:05, 227 marks, passed"});
        const QStringList station18{
            "S: x at 12:00, 137 marks, aborted at 20, 18 tested, missed 18:0",
            "S: x at 12:00, 137 marks, aborted at 20, 18 tested, missed 18:1",
            "S: y at 12:05, 227 marks, passed, save 1 of run 1",
        };
        row("TARVEK by a run's name",
            {imported("S", begun), saved("S", 1, 1, whole),
             savedByTarvek("S", 2, 1, log("z", 7, passedWith18())),
             savedByTarvek("S", 3, 1, log("z", 8, without(passedWith18(), 18, 1)))},
            station18 + QStringList{"S: z at 12:07, 229 marks, passed, 18 tested, save 1 of run 2",
                                    "S: z at 12:08, 228 marks, failed, 18 tested, save 1 of run 3, "
                                    "missed 18:1"});
        row("TARVEK by a mark",
            {imported("S", begun), saved("S", 1, 1, whole),
             imported("S", log("z", 7, passedWith18()))},
            station18 + QStringList{"S: z at 12:07, 229 marks, passed, 18 tested"});
        row("TARVEK by the option",
            {imported("S", begun), saved("S", 1, 1, whole), {{"S", true}, {log("", 0, {})}}},
            station18);
    }

    void anyOrder()
    {
        QFETCH(Facts, facts);
        QFETCH(QStringList, rows);
        Database database(isServer() ? location : ":memory:", Database::Access::Write);
        schema::migrate(database);
        std::vector<std::size_t> order(facts.size());
        std::iota(order.begin(), order.end(), 0);
        for (int tried = 0; tried == 0 || std::next_permutation(order.begin(), order.end());
             ++tried) {
            if (isServer() && tried % 13 != 0) // a server takes its time, the rules are the same
                continue;
            for (const std::size_t fact : order)
                store(database, facts[fact]);
            QCOMPARE(storedrows::all(database), rows);
            for (const char* table : {"attempts", "repeated_saves", "stations"})
                Statement(database, QString("DELETE FROM %1").arg(table)).run();
        }
    }

    void counts()
    {
        Database database(location, Database::Access::Write);
        schema::migrate(database);
        const auto counted = [&](const Fact& fact) {
            const StoreCounts counts = store(database, fact);
            return QVector<int>{counts.added, counts.duplicates, counts.empty, counts.otherStations,
                                counts.future};
        };
        const StationLog whole = log("y", 5, passed());
        QCOMPARE(counted(imported("S", whole)), QVector<int>({1, 0, 0, 0, 0}));
        QCOMPARE(counted(imported("S", whole)), QVector<int>({0, 1, 0, 0, 0}));
        QCOMPARE(counted(imported("R", whole)), QVector<int>({1, 0, 0, 1, 0}));
        QCOMPARE(counted(imported("R", whole)), QVector<int>({0, 1, 0, 0, 0}));
        QCOMPARE(counted(imported("S", log("y", 6, {}))), QVector<int>({0, 0, 1, 0, 0}));
        QCOMPARE(counted(imported("S", log("y", 9999999, passed()))),
                 QVector<int>({1, 0, 0, 0, 1}));
        QCOMPARE(counted(saved("S", 1, 2, whole)), QVector<int>({0, 1, 0, 1, 0}));
        QCOMPARE(counted(saved("S", 1, 1, log("x", 0, abortedAt(20)))),
                 QVector<int>({1, 0, 0, 0, 0}));
        QCOMPARE(counted(saved("T", 1, 1, log("x", 0, abortedAt(20)))),
                 QVector<int>({0, 1, 0, 1, 0}));
        QCOMPARE(counted(imported("R", whole)), QVector<int>({0, 1, 0, 1, 0}));
    }

    /// What a user keeps beside an attempt finds it again.
    void idsStay()
    {
        Database database(location, Database::Access::Write);
        schema::migrate(database);
        const auto ids = [&] {
            Statement select(database, "SELECT id FROM attempts ORDER BY id");
            select.run();
            QVector<int> found;
            while (select.next())
                found << select.number(0);
            return found;
        };
        store(database, imported("S", log("y", 5, passed())));
        store(database, saved("S", 2, 1, log("z", 5, passed())));
        const QVector<int> before = ids();
        QCOMPARE(before.size(), 2);
        store(database, saved("S", 1, 1, log("x", 0, abortedAt(20))));
        store(database, saved("S", 1, 2, log("y", 5, passed())));
        store(database, saved("S", 2, 3, log("z", 9, passedWith18())));
        store(database, saved("R", 2, 2, log("z", 7, passed())));
        QCOMPARE(ids(), before);
    }

    void renamed_data()
    {
        QTest::addColumn<Facts>("facts");
        QTest::addColumn<QStringList>("rows"); // after "station rename Old New"
        const StationLog begun = log("x", 0, abortedAt(20));
        const StationLog whole = log("y", 5, passed());
        const Facts old{saved("Old", 1, 1, begun), saved("Old", 1, 2, whole),
                        imported("Old", log("z", 9, passed()))};
        const auto row = [&](const char* name, const Facts& others, const QStringList& rows) {
            Facts facts = old;
            facts.insert(facts.end(), others.begin(), others.end());
            QTest::newRow(name) << facts << rows;
        };
        const QStringList run{"New: x at 12:00, 137 marks, repeated, save 1 of run 1",
                              "New: y at 12:05, 227 marks, passed, save 2 of run 1"};
        row("to a new name", {}, run + QStringList{"New: z at 12:09, 227 marks, passed"});
        row("to a station with the same logs",
            {imported("New", log("z", 9, passed())), saved("New", 2, 1, whole)},
            {"New: x at 12:00, 137 marks, repeated, save 1 of run 1",
             "New: y at 12:05, 227 marks, passed, save 1 of run 2",
             "New: z at 12:09, 227 marks, passed"});
        row("to a station with other logs", {imported("New", log("a", 7, passed()))},
            QStringList{"New: a at 12:07, 227 marks, passed"} + run +
                QStringList{"New: z at 12:09, 227 marks, passed"});
        const QStringList missed18{"New: z at 12:09, 227 marks, failed, 18 tested, missed 18:0",
                                   "New: z at 12:09, 227 marks, failed, 18 tested, missed 18:1"};
        row("to a TARVEK station", {{{"New", true}, {log("", 0, {})}}}, run + missed18);
        row("from a TARVEK station",
            {{{"Old", true}, {log("", 0, {})}}, imported("New", log("a", 7, abortedAt(2)))},
            QStringList{"New: a at 12:07, 26 marks, aborted at 2, 18 tested"} + run + missed18);
    }

    void renamed()
    {
        QFETCH(Facts, facts);
        QFETCH(QStringList, rows);
        Database database(location, Database::Access::Write);
        schema::migrate(database);
        for (const Fact& fact : facts)
            store(database, fact);
        attemptstore::renameStation(database, "Old", "New");
        QCOMPARE(storedrows::all(database), rows);
        attemptstore::renameStation(database, "New", "New");
        QCOMPARE(storedrows::all(database), rows);
        QVERIFY(kindOfError([&] {
                    attemptstore::renameStation(database, "Old", "New");
                }).contains("unusable: no station is named \"Old\""));
    }

    /// By serial, time, station, number of marks and packed marks, by bytes; never by the order of
    /// import.
    void readInOrder()
    {
        Database database(location, Database::Access::Write);
        schema::migrate(database);
        const QString panel = QString::fromUtf8("\U0001F39B");
        const QString halfwidth = QString::fromUtf8("\uFFEE");
        const Facts facts{imported("z", log("b", 0, passed())),
                          imported("z", log("B", 99, passed())),
                          imported("z", log("a", 5, passed())),
                          imported(panel, log("b", 0, passed())),
                          imported(halfwidth, log("b", 0, without(passed(), 0, 0))),
                          imported(halfwidth, log("b", 0, without(passed(), 0, 1))),
                          imported(halfwidth, log("b", 0, abortedAt(9))),
                          imported("a", log("a", -55, passed())),
                          savedByTarvek("q", 1, 1, log("a", 4, passedWith18()))};
        for (const Fact& fact : facts)
            store(database, fact);
        QStringList read;
        const auto add = [&](const Attempt& attempt) {
            read << QString("%1 %2 %3 %4")
                        .arg(attempt.serial, attempt.station)
                        .arg(attempt.marks.count())
                        .arg(bandmarks::packed(attempt.marks).left(1).toHex().constData());
        };
        attemptreader::forEachByUnit(database, add);
        QCOMPARE(read,
                 QStringList({"B z 227 ff", "a a 227 ff", "a q 229 ff", "a z 227 ff", "b z 227 ff",
                              "b " + halfwidth + " 117 ff", "b " + halfwidth + " 226 fd",
                              "b " + halfwidth + " 226 fe", "b " + panel + " 227 ff"}));
        read.clear();
        attemptreader::forEachByUnit(database, add, QString("a"));
        QCOMPARE(read, QStringList({"a a 227 ff", "a q 229 ff", "a z 227 ff"}));

        QVector<Attempt> attempts;
        attemptreader::forEachByUnit(
            database, [&](const Attempt& attempt) { attempts << attempt; }, QString("a"));
        QCOMPARE(attempts[1].startedAt, QString("2026-11-21T11:59:00.000"));
        QVERIFY(attempts[1].tests18 && attempts[1].testedAt == "2026-11-21T12:04:00");
        QVERIFY(!attempts[2].tests18 && attempts[2].startedAt.isEmpty());
    }

    /// Not later than now; a log that a later save of its run replaced counts too.
    void lastLogs()
    {
        Database database(location, Database::Access::Write);
        schema::migrate(database);
        attemptstore::store(database, {"a"}, {});
        for (const Fact& fact :
             {saved("B", 1, 2, log("x", 0, abortedAt(30))),
              saved("B", 1, 1, log("x", 5, abortedAt(9))), imported("z", log("x", 0, abortedAt(9))),
              imported("z", log("x", 3, passed()))})
            store(database, fact);
        const auto logsAt = [&](int minute) {
            QStringList found;
            for (const auto& last :
                 attemptreader::lastLogs(database, unitlogs::noon().addSecs(60 * minute)))
                found << last.station + last.testedAt.mid(10, 6);
            return found;
        };
        QCOMPARE(logsAt(5), QStringList({"BT12:05", "a", "zT12:03"}));
        QCOMPARE(logsAt(4), QStringList({"BT12:00", "a", "zT12:03"}));
        QCOMPARE(logsAt(2), QStringList({"BT12:00", "a", "zT12:00"}));
    }

    /// Each comes back as it was stored, and its log is a duplicate the second time.
    void hostileSerials()
    {
        QStringList serials =
            QString("~ ~\t~\r\n~'~\\~\\x41~\"; --~?~$1~:a~a\tb~%1~{id}").split('~');
        serials +=
            {QString(1000, 'x'), QString(333, QChar(0x4E0A)), QString::fromUtf8("\U0001F39B")};
        for (const QChar odd : {0xFEFF, 0xFFFE, 0xFFFF, 0x0001, 0x202E, 0xE000})
            serials += {QString(odd), QString(odd) + "A", QString("A") + odd, QString(2, odd)};
        std::vector<LogFile> logs;
        for (int i = 0; i < serials.size(); ++i)
            logs.push_back({log(serials[i], 0, passed()), nameOf(i, 1)});
        Database database(location, Database::Access::Write);
        schema::migrate(database);
        const QString station = QString::fromUtf8("\uFEFFodd \uFFFF");
        QCOMPARE(attemptstore::store(database, {station}, logs).added, serials.size());
        QCOMPARE(attemptstore::store(database, {station}, logs).duplicates, serials.size());
        QSet<QString> found;
        attemptreader::forEachByUnit(database, [&](const Attempt& attempt) {
            found << (attempt.station == station ? attempt.serial : "at another station");
        });
        QCOMPARE(found, QSet<QString>(serials.begin(), serials.end()));
    }

    void errors()
    {
        const auto open = [&] { Database(location, Database::Access::Read); };
        const auto read = [&] {
            Database database(location, Database::Access::Read);
            attemptreader::forEachByUnit(database, [](const Attempt&) {});
        };
        if (!isServer()) {
            QVERIFY(kindOfError(open).startsWith("unusable: there is no database"));
            QVERIFY(!QFile::exists(location)); // a reader makes none
        }
        Database database(location, Database::Access::Write);
        const auto act = [&](const char* sql) {
            return kindOfError([&] { Statement(database, sql).run(); });
        };
        QVERIFY(kindOfError(read).contains("holds no attempts yet"));
        schema::migrate(database);
        QCOMPARE(kindOfError(read), QString("none"));
        // What the tables reject is the log's fault: the next one may be stored.
        QVERIFY(act("INSERT INTO stations (name) VALUES (NULL)").startsWith("data: "));
        store(database, imported("S", log("a\n", 0, passed())));
        QCOMPARE(act("UPDATE attempts SET marks = substr(marks, 2)"), QString("none"));
        QCOMPARE(kindOfError(read), QString("data: the marks of an attempt in the database are "
                                            "damaged (serial \"a\uFFFD\")"));
        if (!isServer()) {
            // Otherwise a power cut undoes a commit that was reported.
            Statement synchronous(database, "PRAGMA synchronous");
            synchronous.run();
            QVERIFY(synchronous.next());
            QCOMPARE(synchronous.number(0), 3); // EXTRA
            return;
        }
        QCOMPARE(act("CREATE DATABASE latin ENCODING LATIN1 LOCALE_PROVIDER libc LOCALE 'C' "
                     "TEMPLATE template0"),
                 QString("none"));
        location.replace("/postgres", "/latin");
        QVERIFY(kindOfError(open).contains("encoding UTF8"));
    }

    /// All of them wait at the lock, for the tables too, and store the same runs by two names.
    void importersAtOnce()
    {
        Importers importers;
        {
            Database database(location, Database::Access::Write);
            const Transaction transaction(database, Database::Access::Write);
            QStringList paths = logPaths;
            for (QProcess& importer : importers) {
                start(importer, location, paths.first() == logPaths.first() ? "S" : "T", paths);
                std::reverse(paths.begin(), paths.end());
            }
            QTRY_COMPARE_WITH_TIMEOUT(waiting(importers, database), importers.size(), 30000);
        }
        for (QProcess& importer : importers)
            QVERIFY2(finish(importer) == 0, importer.readAllStandardError());
        Database database(location, Database::Access::Read);
        attemptstore::renameStation(database, "T", "S"); // imported logs are at both
        QCOMPARE(storedrows::all(database), expectedRows);
    }

    void killedImports()
    {
        const int times = figures::count(2, 100);
        int killed = 0;
        for (int i = 0; i < times; ++i) {
            init();
            QProcess importer;
            start(importer, location, "S", logPaths);
            if (!importer.waitForFinished(QRandomGenerator::global()->bounded(wholeImportMs))) {
                importer.kill();
                ++killed;
            }
            finish(importer);
            QVERIFY(import(location, "S", logPaths));
            Database database(location, Database::Access::Read);
            QCOMPARE(storedrows::all(database), expectedRows);
        }
        figures::print(QString("imports killed, %1").arg(isServer() ? "PostgreSQL" : "SQLite"),
                       times, 0, QString("%1 before their end").arg(killed));
    }

    /// Nothing of a transaction that failed is reported as stored.
    void fullDisk()
    {
        if (isServer())
            return;
        {
            Database database(location, Database::Access::Write);
            schema::migrate(database);
        }
        QProcess importer;
        constexpr int freeBlocks = 40; // of 512 bytes
        start(importer, location, "S", logPaths,
              QString::number(QFileInfo(location).size() / 512 + freeBlocks));
        QCOMPARE(finish(importer), 2);
        const QByteArray error = importer.readAllStandardError();
        QVERIFY2(error.contains(location.toUtf8() + ": "), error);
        const QByteArray report = importer.readAllStandardOutput();
        QVERIFY2(report.startsWith("0 logs: 0 new,"), report);
        QVERIFY(import(location, "S", logPaths));
        Database database(location, Database::Access::Read);
        QCOMPARE(storedrows::all(database), expectedRows);
    }

private:
    using Importers = std::array<QProcess, 8>;

    const int unitCount = figures::count(100, 1050); // in full more than one transaction

    static bool isServer()
    {
        QFETCH_GLOBAL(bool, isServer);
        return isServer;
    }

    /// Runs of units in one folder, logs without their runs and retests in the other.
    void writeLogs()
    {
        logPaths = QStringList{folder.filePath("Stored"), folder.filePath("Logs")};
        for (const QString& path : logPaths)
            QVERIFY(QDir().mkpath(path));
        for (int unit = 0; unit < unitCount; ++unit) {
            const QString serial = QString("/%1").arg(unit);
            const BandMarks marks = unit % 20 == 0 ? abortedAt(unit % 43 + 1) : passed();
            unitlogs::write(logPaths[0] + '/' + nameOf(unit, 2).fileName(), serial, marks);
            unitlogs::write(logPaths[1] + serial, serial, marks);
            if (unit % 10 != 0)
                continue;
            unitlogs::write(logPaths[0] + '/' + nameOf(unit, 1).fileName(), serial,
                            without(abortedAt(3), 1, unit % 13), unitlogs::noon().addSecs(-60));
            unitlogs::write(logPaths[1] + serial + " retest", serial,
                            without(passed(), unit % 9, unit % 13), unitlogs::noon().addSecs(3600));
        }
    }

    /// maxBlocks: of 512 bytes, in any file; what is more fails, as on a full disk.
    static void start(QProcess& importer, const QString& database, const QString& station,
                      const QStringList& paths, const QString& maxBlocks = "unlimited")
    {
        const QString shell = QString("trap '' XFSZ; ulimit -f %1; exec \"$@\"").arg(maxBlocks);
        importer.start("sh", QStringList{"-c", shell, "sh", ZORVI_YIELD, "import", "--database",
                                         database, "--station", station} +
                                 paths);
    }

    static int finish(QProcess& importer)
    {
        return importer.waitForFinished(60000) ? importer.exitCode() : -1;
    }

    static bool import(const QString& database, const QString& station, const QStringList& paths)
    {
        QProcess importer;
        start(importer, database, station, paths);
        return finish(importer) == 0;
    }

    /// How many have come to the database: to its lock, or to its file.
    static std::size_t waiting(const Importers& importers, Database& database)
    {
        if (isServer()) {
            Statement select(database, "SELECT count(*) FROM pg_locks "
                                       "WHERE locktype = 'advisory' AND NOT granted");
            select.run();
            return select.next() ? static_cast<std::size_t>(select.number(0)) : 0;
        }
        const QString file = database.connection().databaseName();
        const auto hasOpened = [&](const QProcess& importer) {
            const QDir files(QString("/proc/%1/fd").arg(importer.processId()));
            const auto entries = files.entryInfoList(QDir::Files | QDir::System);
            return std::any_of(entries.begin(), entries.end(), [&](const QFileInfo& entry) {
                return entry.symLinkTarget() == file;
            });
        };
        return static_cast<std::size_t>(
            std::count_if(importers.begin(), importers.end(), hasOpened));
    }

    int databases = 0;
    QString location;
    QTemporaryDir folder;
    QStringList logPaths;
    QStringList expectedRows;
    int wholeImportMs = 300;
    PostgresServer server;
};

QTEST_GUILESS_MAIN(TestStore)
#include "test_store.moc"
