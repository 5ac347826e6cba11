// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/support/figures.h"
#include "tests/yield/testdatabase.h"
#include "tests/yield/unitlogs.h"
#include "yield/store/attemptreader.h"
#include "yield/store/attemptstore.h"
#include "yield/store/schema.h"

#include <QDir>

#include <algorithm>
#include <array>
#include <numeric>

using testdatabase::errorOf;
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

OutboxName nameOf(int run, int save, bool isTarvek = false)
{
    return {QString("20261121T115900.000-%1").arg(run, 16, 16, QChar('0')), save, isTarvek};
}

Fact saved(const QString& station, const OutboxName& name, const StationLog& log)
{
    return {{station}, {log, name}};
}

/// An import without a log, with the option --tests-component-18.
Fact tests18(const QString& station)
{
    return {{station, true}, {log("", 0, {})}};
}

StoreCounts store(Database& database, const Station& station, const std::vector<LogFile>& files)
{
    StoreCounts counts;
    attemptstore::store(database, station, files, counts);
    return counts;
}

StoreCounts store(Database& database, const Fact& fact)
{
    return store(database, fact.station, {fact.file});
}

const StationLog begun = log("x", 0, without(abortedAt(20), 3, 5));
const StationLog whole = log("y", 5, passed());
const StationLog own = log("z", 9, passed());
// A run that was saved twice.
const Fact save1 = saved("S", nameOf(1, 1), begun);
const Fact save2 = saved("S", nameOf(1, 2), whole);

// The logs that the tables of both releases hold; the last one is a repeated save.
const std::vector<LogFile> logs{{log("whole", 0, passed())},
                                {log("dead", 1, without(passed(), 3, 5))},
                                {log("short", 2, abortedAt(42))},
                                {log("whole", 9, passed())}};

void runScript(Database& database, const QString& path)
{
    QFile script(path);
    QVERIFY(script.open(QIODevice::ReadOnly));
    for (const QString& statement : QString(script.readAll()).split(";\n", Qt::SkipEmptyParts))
        database.run(statement);
}

/// Makes the tables of release 1.1.0, with the logs in them as it had them; or as 1.2.0 had
/// migrated these.
void makeTables(Database& database, int version)
{
    runScript(database, VERSION1_SQL);
    database.run("INSERT INTO stations (name, tests_18) VALUES ('S', 0), ('TARVEK', 1)");
    for (const auto& [stationId, log, isComplete] : {std::make_tuple(1, logs[0].log, 1),
                                                     {1, logs[1].log, 0},
                                                     {1, logs[2].log, 0},
                                                     {2, log("all", 3, passedWith18), 1}})
        database.run(
            "INSERT INTO attempts (serial, tested_at, marks, station_id, complete) "
            "VALUES (?, ?, ?, ?, ?)",
            {log.serial, log.testedAt, bandmarks::packed(log.marks), stationId, isComplete});
    database.run("INSERT INTO other_saves VALUES (1, ?, ?, ?)",
                 {logs[3].log.serial, logs[3].log.testedAt, bandmarks::packed(logs[3].log.marks)});
    database.run("INSERT INTO missed_bands VALUES (2, 3, 5), (3, 42, 0), (3, 43, 0)");
    if (version == 1)
        return;
    runScript(database, ":/store/migrate1to2.sql");
    for (const char* statement :
         {"UPDATE attempts SET ended_at = 42 WHERE id = 3",
          "DELETE FROM missed_bands WHERE attempt_id = 3", "UPDATE schema_version SET version = 2",
          "CREATE INDEX attempts_by_unit ON attempts (serial, tested_at, station_id, marks)",
          "CREATE INDEX repeated_saves_by_unit ON repeated_saves (serial)"})
        database.run(statement);
}

/// Columns and indexes, a line each.
QStringList schemaOf(Database& database, bool isServer)
{
    return testdatabase::linesOf(database, isServer ? R"(
        SELECT concat_ws(' ', table_name, column_name, data_type, is_nullable, column_default)
        FROM information_schema.columns
        WHERE table_schema = 'public' AND table_name NOT IN ('results')
        UNION ALL
        SELECT replace(replace(indexdef, 'other_saves_pkey', 'repeated_saves_pkey'),
                       ' COLLATE "C"', '') -- which the columns of 1.1.0 have themselves
        FROM pg_indexes WHERE schemaname = 'public')"
                                                    : R"(
        SELECT tables.name || columns.cid || columns.name || columns.type || columns."notnull"
        FROM sqlite_master AS tables, pragma_table_info(tables.name) AS columns
        WHERE tables.type = 'table'
        UNION ALL
        SELECT sql FROM sqlite_master WHERE type = 'index' AND sql IS NOT NULL)");
}

QString readError(Database& database)
{
    return errorOf([&] { attemptreader::forEachUnit(database, [](const auto&) {}); });
}

} // namespace

using Facts = std::vector<Fact>;
Q_DECLARE_METATYPE(Facts)

/// Each test with an empty database of both kinds. Importers, several at once, are the real
/// program.
class TestDatabase : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase_data()
    {
        QTest::addColumn<bool>("isServer");
        QTest::newRow("SQLite") << false;
        QTest::newRow("PostgreSQL") << true;
    }

    void initTestCase() { QCOMPARE(server.create(), QString()); }

    void init()
    {
        empty();
        schema::migrate(*database);
    }

    void anyOrder_data()
    {
        QTest::addColumn<Facts>("facts");
        QTest::addColumn<QStringList>("rows");
        const QStringList run{"S: x at 12:00, repeated, save 1 of run 1",
                              "S: y at 12:05, passed, save 2 of run 1"};
        QTest::newRow("saves of a run, its serial corrected")
            << Facts{save1, save2, saved("S", nameOf(1, 3), log("y", 9, without(passed(), 3, 5)))}
            << QStringList{run[0], "S: y at 12:05, repeated, save 2 of run 1",
                           "S: y at 12:09, failed, save 3 of run 1, missed 3:5"};
        QTest::newRow("imported logs that are saves of a run")
            << Facts{save1, save2, imported("S", begun), imported("S", whole), imported("R", whole)}
            << run;
        QTest::newRow("a run by the names of two stations")
            << Facts{save1, save2, saved("R", nameOf(1, 2), whole), imported("Q", begun)}
            << QStringList{"R: x at 12:00, repeated, save 1 of run 1",
                           "R: y at 12:05, passed, save 2 of run 1"};
        QTest::newRow("the same log at two saves")
            << Facts{saved("S", nameOf(1, 1), whole), save2, saved("S", nameOf(1, 3), begun),
                     saved("S", nameOf(1, 4), whole)}
            << QStringList{"S: x at 12:00, repeated, save 3 of run 1",
                           "S: y at 12:05, passed, save 4 of run 1"};
        const QStringList known18{"S: x at 12:00, aborted at 20, 18 tested, missed 18:0",
                                  "S: x at 12:00, aborted at 20, 18 tested, missed 18:1",
                                  "S: x at 12:00, aborted at 20, 18 tested, missed 3:5", run[1]};
        QTest::newRow("TARVEK by the name of a run")
            << Facts{imported("S", begun), save2,
                     saved("S", nameOf(2, 1, true), log("z", 8, abortedAt(2)))}
            << known18 + QStringList{"S: z at 12:08, aborted at 2, 18 tested, save 1 of run 2"};
        QTest::newRow("TARVEK by a mark of a run")
            << Facts{imported("S", begun), save2,
                     saved("S", nameOf(2, 2), log("z", 7, abortedAt(2))),
                     saved("S", nameOf(2, 1), log("z", 8, passedWith18))}
            << known18 + QStringList{"S: z at 12:07, aborted at 2, 18 tested, save 2 of run 2",
                                     "S: z at 12:08, repeated, save 1 of run 2"};
    }

    void anyOrder()
    {
        QFETCH(Facts, facts);
        QFETCH(QStringList, rows);
        std::vector<std::size_t> order(facts.size());
        std::iota(order.begin(), order.end(), 0);
        for (int tried = 0; tried == 0 || std::next_permutation(order.begin(), order.end());
             ++tried) {
            if (isServer() && tried % 13 != 0) // a server takes its time, the rules are the same
                continue;
            for (const std::size_t fact : order)
                store(*database, facts[fact]);
            QCOMPARE(testdatabase::rows(*database), rows);
            for (const char* table : {"attempts", "repeated_saves", "stations"})
                database->run(QString("DELETE FROM %1").arg(table));
        }
    }

    /// So that what a user stores beside an attempt stays with it.
    void idsStay()
    {
        store(*database, imported("S", whole));
        store(*database, saved("S", nameOf(2, 1), own));
        const QStringList before = testdatabase::linesOf(*database, "SELECT id FROM attempts");
        for (const Fact& fact : {save1, // a third one, until its run is known
                                 save2, saved("S", nameOf(2, 3), log("z", 11, passedWith18)),
                                 saved("R", nameOf(2, 2), log("z", 10, passed()))})
            store(*database, fact);
        QCOMPARE(testdatabase::linesOf(*database, "SELECT id FROM attempts"), before);
    }

    void renamed_data()
    {
        QTest::addColumn<Facts>("others"); // beside the logs of Old
        QTest::addColumn<QStringList>("rows");
        const QStringList run{"New: x at 12:00, repeated, save 1 of run 1",
                              "New: y at 12:05, passed, save 2 of run 1"};
        const QStringList failed18{"New: z at 12:09, failed, 18 tested, missed 18:0",
                                   "New: z at 12:09, failed, 18 tested, missed 18:1"};
        const QStringList passedOwn{"New: z at 12:09, passed"};
        QTest::newRow("to a new name") << Facts() << run + passedOwn;
        QTest::newRow("to a station with the same logs")
            << Facts{imported("New", own), saved("New", nameOf(2, 1), whole)}
            << QStringList{run[0], "New: y at 12:05, passed, save 1 of run 2"} + passedOwn;
        QTest::newRow("to a TARVEK station") << Facts{tests18("New")} << run + failed18;
        QTest::newRow("from a TARVEK station")
            << Facts{tests18("Old"), imported("New", log("a", 7, abortedAt(2)))}
            << QStringList{"New: a at 12:07, aborted at 2, 18 tested"} + run + failed18;
    }

    void renamed()
    {
        QFETCH(Facts, others);
        QFETCH(QStringList, rows);
        for (const Fact& fact : {saved("Old", nameOf(1, 1), begun),
                                 saved("Old", nameOf(1, 2), whole), imported("Old", own)})
            store(*database, fact);
        for (const Fact& fact : others)
            store(*database, fact);
        attemptstore::renameStation(*database, "Old", "New");
        QCOMPARE(testdatabase::rows(*database), rows);
        attemptstore::renameStation(*database, "New", "New");
        QCOMPARE(testdatabase::rows(*database), rows);
        QCOMPARE(errorOf([&] { attemptstore::renameStation(*database, "Old", "New"); }),
                 QString("unusable: no station is named \"Old\""));
    }

    /// Attempts by serial, time and station, by bytes, never by the order of import; last logs
    /// not later than now, of repeated saves too.
    void readsInOrder()
    {
        store(*database, {"B"}, {});
        for (const Fact& fact :
             {imported("z", log("b", 0, passed())), imported("z", log("B", 99, passed())),
              imported("z", log("a", 5, passed())), imported("a", log("b", 0, passed())),
              imported("a", log("a", -55, passed())),
              saved("q", nameOf(1, 2, true), log("a", 4, passedWith18)),
              saved("q", nameOf(1, 1, true), log("a", 9, passedWith18))})
            store(*database, fact);
        QStringList found;
        const auto add = [&](const auto& unit) {
            for (const Attempt& each : unit)
                found << each.serial + each.station + each.testedAt.mid(10) +
                             (each.tests18 ? ", 18 tested" : "") + each.startedAt;
        };
        const QStringList a{"aaT11:05:00", "aqT12:04:00, 18 tested2026-11-21T11:59:00.000",
                            "azT12:05:00"};
        attemptreader::forEachUnit(*database, add, QString("a"));
        QCOMPARE(found, a);
        attemptreader::forEachUnit(*database, add);
        QCOMPARE(found.mid(3),
                 QStringList("BzT13:39:00") + a + QStringList({"baT12:00:00", "bzT12:00:00"}));
        for (const auto& [minute, last] : {std::make_pair(8, "12:04"), {9, "12:09"}}) {
            found.clear();
            for (const auto& each :
                 attemptreader::lastLogs(*database, unitlogs::noon().addSecs(60 * minute)))
                found << each.station + each.testedAt.mid(11, 5);
            QCOMPARE(found, QStringList({"B", "a12:00", QString("q") + last, "z12:05"}));
        }
    }

    /// Each comes back as it was stored, and its log is a duplicate the second time.
    void hostileSerials()
    {
        QStringList serials = QString("~ ~\t~\r\n~'~\\~\\x41~\"; --~?~$1~:a~%1~{id}").split('~');
        for (const QChar odd : {0xFEFF, 0xFFFE, 0xFFFF, 0x0001, 0x202E, 0xE000})
            serials += {QString(odd), QString(odd) + "A", QString("A") + odd};
        const QString station = QString::fromUtf8("\uFEFFodd \uFFFF \U0001F39B");
        for (int i = 0; i < serials.size(); ++i) {
            const Fact fact = saved(station, nameOf(i, 1), log(serials[i], 0, passed()));
            QCOMPARE(store(*database, fact).added, 1);
            QCOMPARE(store(*database, fact).duplicates, 1);
        }
        QSet<QString> found;
        attemptreader::forEachUnit(*database, [&](const auto& unit) {
            QCOMPARE(unit.size(), std::size_t{1});
            found << (unit[0].station == station ? unit[0].serial : "at another station");
        });
        QCOMPARE(found, QSet<QString>(serials.begin(), serials.end()));
    }

    void migrates_data()
    {
        QTest::addColumn<int>("version");
        QTest::newRow("1.1.0") << 1;
        QTest::newRow("1.2.0") << 2;
    }

    /// Attempts stay counted as they were, with their ids.
    void migrates()
    {
        QFETCH(int, version);
        const QStringList fresh = schemaOf(*database, isServer());
        empty();
        QVERIFY(readError(*database).contains("holds no attempts yet"));
        makeTables(*database, version);
        if (isServer())
            database->run("DROP ROLE IF EXISTS reader; CREATE ROLE reader; "
                          "GRANT SELECT ON attempts TO reader");
        const QStringList old = schemaOf(*database, isServer());
        QVERIFY(readError(*database).contains("older"));
        QVERIFY_EXCEPTION_THROWN(store(*database, {"S"}, logs), DatabaseError);
        QCOMPARE(schemaOf(*database, isServer()), old); // reading migrates nothing

        schema::migrate(*database);
        QCOMPARE(schemaOf(*database, isServer()), fresh);
        const QStringList rows{"S: dead at 12:01, failed, missed 3:5",
                               "S: short at 12:02, aborted at 42", "S: whole at 12:00, passed",
                               "S: whole at 12:09, repeated",
                               "TARVEK: all at 12:03, passed, 18 tested"};
        QCOMPARE(testdatabase::rows(*database), rows);
        QCOMPARE(testdatabase::linesOf(*database, "SELECT id FROM attempts"),
                 QStringList({"1", "2", "3", "4"}));
        QCOMPARE(readError(*database), QString("none"));
        database->run("SELECT * FROM results");
        if (isServer())
            database->run("SET ROLE reader; SELECT run FROM attempts; RESET ROLE");

        schema::migrate(*database);
        QCOMPARE(store(*database, {"S"}, logs).duplicates, 4);
        // A repeated save does not become an attempt by another name.
        QCOMPARE(store(*database, {"T"}, logs).added, 4);
        attemptstore::renameStation(*database, "T", "S");
        QCOMPARE(store(*database, {"T"}, logs).added, 4);
        attemptstore::renameStation(*database, "S", "T");
        attemptstore::renameStation(*database, "T", "S");
        QCOMPARE(testdatabase::rows(*database), rows);
    }

    /// One that fails leaves everything as it was.
    void fails()
    {
        empty();
        makeTables(*database, 2);
        database->run("CREATE TABLE attempts_by_station (of_a_user INTEGER)");
        const QStringList old = schemaOf(*database, isServer());
        QVERIFY_EXCEPTION_THROWN(schema::migrate(*database), DatabaseError);
        QCOMPARE(schemaOf(*database, isServer()), old);
        database->run("DROP TABLE attempts_by_station");
        schema::migrate(*database);
        QCOMPARE(testdatabase::linesOf(*database, "SELECT id FROM attempts").size(), 4);
    }

    /// A program that meets tables of a newer one changes nothing.
    void newerTables()
    {
        database->run("UPDATE schema_version SET version = 4");
        for (const std::function<void()>& act : std::initializer_list<std::function<void()>>{
                 [&] { schema::migrate(*database); }, [&] { store(*database, {"S"}, logs); },
                 [&] { attemptstore::renameStation(*database, "S", "T"); },
                 [&] { attemptreader::lastLogs(*database, unitlogs::noon()); },
                 [&] { attemptreader::forEachUnit(*database, [](const auto&) {}); }})
            QVERIFY(errorOf(act).contains("newer zorvi_yield"));
        database->run("UPDATE schema_version SET version = 3");
        QCOMPARE(testdatabase::rows(*database), QStringList());
    }

    void errors()
    {
        const auto run = [&](const char* sql) { return errorOf([&] { database->run(sql); }); };
        // What the tables reject is the log's fault: the next one may be stored.
        QVERIFY(run("INSERT INTO stations (name) VALUES (NULL)").startsWith("data: "));
        QVERIFY(run("SELECT none FROM stations").startsWith("unavailable: "));
        store(*database, {"S"}, {{log("a\n", 0, passed())}});
        database->run("UPDATE attempts SET marks = substr(marks, 2)");
        QCOMPARE(readError(*database), QString("data: the marks of an attempt in the database are "
                                               "damaged (serial \"a\uFFFD\")"));
        if (isServer())
            return;
        const QString missing = folder.filePath("missing");
        QCOMPARE(errorOf([&] { Database(missing, Database::Access::Read); }),
                 "unusable: there is no database " + missing + " yet; \"import\" makes one");
        QVERIFY(!QFile::exists(missing));
        // EXTRA, otherwise a power cut undoes a commit that was reported.
        QCOMPARE(testdatabase::linesOf(*database, "PRAGMA synchronous"), QStringList{"3"});
    }

    /// Of the real program, on a new database. All of them wait for the writers' lock, for the
    /// tables too, and store the same logs as two stations, each in another order.
    void importersAtOnce()
    {
        empty();
        const QString location = isServer() ? server.location() : folder.filePath("database");
        QStringList paths{folder.filePath("Stored"), folder.filePath("Logs")};
        const QStringList expected = writeLogs(paths);
        std::array<QProcess, 8> importers;
        {
            Database held(location, Database::Access::Write);
            const Transaction transaction(held, Database::Access::Write);
            for (QProcess& importer : importers) {
                const QString station = paths.first().endsWith("Stored") ? "S" : "T";
                importer.start(ZORVI_YIELD,
                               QStringList{"import", "--database", location, "--station", station} +
                                   paths);
                std::reverse(paths.begin(), paths.end());
            }
            QTest::qWait(1000); // until they have come to the lock
        }
        for (QProcess& importer : importers)
            QVERIFY2(importer.waitForFinished(60000) && importer.exitCode() == 0,
                     importer.readAllStandardError());
        Database stored(location, Database::Access::Read);
        attemptstore::renameStation(stored, "T", "S"); // logs without a run are at both
        QCOMPARE(testdatabase::rows(stored), expected);
        figures::print(QString("importers at once, %1").arg(isServer() ? "PostgreSQL" : "SQLite"),
                       8, 0);
    }

private:
    static bool isServer()
    {
        QFETCH_GLOBAL(bool, isServer);
        return isServer;
    }

    void empty() { database = testdatabase::empty(isServer() ? &server : nullptr); }

    /// Runs in one folder, the same logs without their runs in the other. Returns their rows.
    QStringList writeLogs(const QStringList& folders) const
    {
        for (const QString& path : folders)
            QDir().mkpath(path);
        QStringList rows;
        for (int unit = 0; unit < unitCount; ++unit) {
            const QString serial = QString::number(unit);
            const BandMarks marks = without(passed(), 3, unit % 13);
            unitlogs::write(folders[0] + '/' + nameOf(unit, 1).fileName(), serial,
                            abortedAt(unit % 40 + 2), unitlogs::noon().addSecs(-60));
            unitlogs::write(folders[0] + '/' + nameOf(unit, 2).fileName(), serial, marks);
            unitlogs::write(folders[1] + '/' + serial, serial, marks);
            const QString digit = QString::number(unit % 16, 16);
            rows << "S: " + serial + " at 11:59, repeated, save 1 of run " + digit
                 << "S: " + serial + " at 12:00, failed, save 2 of run " + digit +
                        ", missed 3:" + QString::number(unit % 13);
        }
        rows.sort();
        return rows;
    }

    const int unitCount = figures::count(40, 1050); // in full more than one transaction
    QTemporaryDir folder;
    PostgresServer server;
    std::unique_ptr<Database> database;
};

QTEST_GUILESS_MAIN(TestDatabase)
#include "test_database.moc"
