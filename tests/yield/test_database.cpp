// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/support/figures.h"
#include "tests/yield/testdatabase.h"
#include "tests/yield/unitlogs.h"
#include "yield/store/attemptreader.h"
#include "yield/store/attemptstore.h"
#include "yield/store/schema.h"

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <array>

using testdatabase::errorOf;
using unitlogs::abortedAt;
using unitlogs::log;
using unitlogs::passed;
using unitlogs::without;

namespace
{
// The logs that the tables of both releases hold; the last one is a repeated save.
const StationLog whole = log("whole", 0, passed());
const StationLog dead = log("dead", 1, without(passed(), 3, 5));
const StationLog cut = log("short", 2, abortedAt(42));
const StationLog all = log("all", 3, unitlogs::passedWith18);
const StationLog again = log("whole", 9, passed());
const std::vector<LogFile> logs{{whole}, {dead}, {cut}, {again}};

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
    for (const auto& [stationId, log, isComplete] :
         {std::make_tuple(1, whole, 1), {1, dead, 0}, {1, cut, 0}, {2, all, 1}})
        database.run(
            "INSERT INTO attempts (serial, tested_at, marks, station_id, complete) "
            "VALUES (?, ?, ?, ?, ?)",
            {log.serial, log.testedAt, bandmarks::packed(log.marks), stationId, isComplete});
    database.run("INSERT INTO other_saves VALUES (1, ?, ?, ?)",
                 {again.serial, again.testedAt, bandmarks::packed(again.marks)});
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

StoreCounts store(Database& database, const QString& station, const std::vector<LogFile>& files)
{
    StoreCounts counts;
    attemptstore::store(database, {station}, files, counts);
    return counts;
}
} // namespace

/// Databases of both kinds: of earlier releases, of newer ones, with errors, and with several
/// importers at once.
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

    void init() { database = testdatabase::empty(isServer() ? &server : nullptr); }

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
        schema::migrate(*database);
        const QStringList fresh = schemaOf(*database, isServer());
        init();
        makeTables(*database, version);
        if (isServer())
            database->run("DROP ROLE IF EXISTS reader; CREATE ROLE reader; "
                          "GRANT SELECT ON attempts TO reader");
        const QStringList old = schemaOf(*database, isServer());
        QVERIFY(readError(*database).contains("older"));
        QVERIFY_EXCEPTION_THROWN(store(*database, "S", logs), DatabaseError);
        QCOMPARE(schemaOf(*database, isServer()), old); // reading migrates nothing

        schema::migrate(*database);
        QCOMPARE(schemaOf(*database, isServer()), fresh);
        const QStringList rows{"S: dead at 12:01, failed, missed 3:5",
                               "S: short at 12:02, aborted at 42", "S: whole at 12:00, passed",
                               "S: whole at 12:09, repeated",
                               "TARVEK: all at 12:03, passed, 18 tested"};
        QCOMPARE(testdatabase::rows(*database), rows);
        QCOMPARE(testdatabase::attemptIds(*database), QStringList({"1", "2", "3", "4"}));
        QCOMPARE(readError(*database), QString("none"));
        database->run("SELECT * FROM results");
        if (isServer())
            database->run("SET ROLE reader; SELECT run FROM attempts; RESET ROLE");

        schema::migrate(*database);
        QCOMPARE(store(*database, "S", logs).duplicates, 4);
        // A repeated save does not become an attempt by another name.
        QCOMPARE(store(*database, "T", logs).added, 4);
        attemptstore::renameStation(*database, "T", "S");
        QCOMPARE(store(*database, "T", logs).added, 4);
        attemptstore::renameStation(*database, "S", "T");
        attemptstore::renameStation(*database, "T", "S");
        QCOMPARE(testdatabase::rows(*database), rows);
    }

    /// One that fails leaves everything as it was.
    void fails()
    {
        makeTables(*database, 2);
        database->run("CREATE TABLE attempts_by_station (of_a_user INTEGER)");
        const QStringList old = schemaOf(*database, isServer());
        QVERIFY_EXCEPTION_THROWN(schema::migrate(*database), DatabaseError);
        QCOMPARE(schemaOf(*database, isServer()), old);
        database->run("DROP TABLE attempts_by_station");
        schema::migrate(*database);
        QCOMPARE(testdatabase::attemptIds(*database).size(), 4);
    }

    /// A program that meets tables of a newer one changes nothing.
    void newerTables()
    {
        schema::migrate(*database);
        database->run("UPDATE schema_version SET version = 4");
        for (const std::function<void()>& act : std::initializer_list<std::function<void()>>{
                 [&] { schema::migrate(*database); }, [&] { store(*database, "S", logs); },
                 [&] { attemptstore::renameStation(*database, "S", "T"); },
                 [&] { attemptreader::lastLogs(*database, unitlogs::noon()); },
                 [&] { attemptreader::forEachUnit(*database, [](const auto&) {}); }})
            QVERIFY(errorOf(act).contains("newer zorvi_yield"));
        database->run("UPDATE schema_version SET version = 3");
        QCOMPARE(testdatabase::rows(*database), QStringList());
    }

    /// All of the logs are stored, or none.
    void fullDisk()
    {
        if (isServer())
            return;
        schema::migrate(*database);
        database->run("PRAGMA max_page_count = 1"); // as many as there are
        std::vector<LogFile> many;
        for (int i = 0; i < 1000; ++i)
            many.push_back({log("x", i, passed())});
        QVERIFY(errorOf([&] { store(*database, "S", many); }).startsWith("unavailable: "));
        QCOMPARE(testdatabase::rows(*database), QStringList());
    }

    void errors()
    {
        QVERIFY(readError(*database).contains("holds no attempts yet"));
        schema::migrate(*database);
        const auto run = [&](const char* sql) { return errorOf([&] { database->run(sql); }); };
        // What the tables reject is the log's fault: the next one may be stored.
        QVERIFY(run("INSERT INTO stations (name) VALUES (NULL)").startsWith("data: "));
        QVERIFY(run("SELECT none FROM stations").startsWith("unavailable: "));
        store(*database, "S", {{log("a\n", 0, passed())}});
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
        const QString location = isServer() ? server.location() : folder.filePath("database");
        QStringList paths{folder.filePath("Stored"), folder.filePath("Logs")};
        writeLogs(paths);
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
        QStringList expected;
        for (int unit = 0; unit < unitCount; ++unit)
            expected << QString("S: %1 at 11:59, repeated").arg(unit)
                     << QString("S: %1 at 12:00, failed, missed %2:%3")
                            .arg(unit)
                            .arg(unit % 9)
                            .arg(unit % 13);
        expected.sort();
        QStringList found = testdatabase::rows(stored);
        found.replaceInStrings(QRegularExpression(", save . of run ."), "");
        found.sort();
        QCOMPARE(found, expected);
        figures::print(QString("importers at once, %1").arg(isServer() ? "PostgreSQL" : "SQLite"),
                       8, 0);
    }

private:
    static bool isServer()
    {
        QFETCH_GLOBAL(bool, isServer);
        return isServer;
    }

    /// Runs in one folder, the same logs without their runs in the other.
    void writeLogs(const QStringList& folders) const
    {
        for (const QString& path : folders)
            QVERIFY(QDir().mkpath(path));
        for (int unit = 0; unit < unitCount; ++unit) {
            const QString serial = QString::number(unit);
            const QString run = QString("20261121T115900.000-%1").arg(unit, 16, 16, QChar('0'));
            const BandMarks marks = without(passed(), unit % 9, unit % 13);
            unitlogs::write(folders[0] + '/' + OutboxName{run, 1}.fileName(), serial,
                            abortedAt(unit % 40 + 2), unitlogs::noon().addSecs(-60));
            unitlogs::write(folders[0] + '/' + OutboxName{run, 2}.fileName(), serial, marks);
            unitlogs::write(folders[1] + '/' + serial, serial, marks);
        }
    }

    const int unitCount = figures::count(40, 1050); // in full more than one transaction
    QTemporaryDir folder;
    PostgresServer server;
    std::unique_ptr<Database> database;
};

QTEST_GUILESS_MAIN(TestDatabase)
#include "test_database.moc"
