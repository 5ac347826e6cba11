// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/support/figures.h"
#include "tests/yield/postgresserver.h"
#include "tests/yield/unitlogs.h"
#include "yield/store/attemptreader.h"
#include "yield/store/attemptstore.h"
#include "yield/store/database.h"
#include "yield/store/statement.h"

#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <array>

namespace
{
/// The program. mostBlocks: of 512 bytes, in any file; what is more fails, as on a full disk.
void begin(QProcess& importer, const QString& database, const QString& station,
           const QStringList& paths, const QString& mostBlocks = "unlimited")
{
    const QString shell = QString("trap '' XFSZ; ulimit -f %1; exec \"$@\"").arg(mostBlocks);
    importer.start("sh", QStringList{"-c", shell, "sh", ZORVI_YIELD, "import", "--database",
                                     database, "--station", station} +
                             paths);
}

int finish(QProcess& importer)
{
    constexpr int patienceMs = 60000;
    return importer.waitForFinished(patienceMs) && importer.exitStatus() == QProcess::NormalExit
               ? importer.exitCode()
               : -1;
}

/// "whole", "all" (with component 18), "none", "to20" (as far as 20), "miss" and "miss20" (without
/// a band of 3).
BandMarks marksOf(QString words)
{
    const BandMarks missing = unitlogs::allBut({{3, 5}, {18, 0}, {18, 1}});
    if (words == "all")
        return ~BandMarks();
    if (words == "none")
        return {};
    const BandMarks marks = words.startsWith("miss") ? missing : unitlogs::whole();
    const int end = words.remove(QRegularExpression("[a-z]")).toInt();
    return end == 0 ? marks : marks & unitlogs::upTo(end);
}

/// Gives what came of each step: the counts, the error, or what "check" says. A step is "STATION
/// SERIAL/MINUTE/MARKS ...", "STATION+" for one that tests component 18, "rename OLD NEW", "check",
/// or "SQL ...".
QString run(Database& database, const QString& steps)
{
    QStringList outcomes;
    for (const QString& step : steps.split("; "))
        try {
            const QStringList words = step.split(' ');
            if (words[0] == "SQL") {
                Statement(database, step.mid(4)).run();
            } else if (words[0] == "check") {
                attemptstore::check(database, [&](const QString& line) { outcomes << line; });
            } else if (words[0] == "rename") {
                attemptstore::renameStation(database, words[1], words[2]);
            } else {
                std::vector<StationLog> logs;
                for (const QString& word : words.mid(1)) {
                    const QStringList parts = word.split('/');
                    logs.push_back(unitlogs::log(parts[0], parts[1].toInt(), marksOf(parts[2])));
                }
                const bool tests18 = words[0].endsWith('+');
                const auto counts = attemptstore::store(
                    database, {words[0].chopped(tests18 ? 1 : 0), tests18}, logs);
                QString text;
                for (const int count : {counts.added, counts.known, counts.notAttempt,
                                        counts.elsewhere, counts.future})
                    text += QString::number(count);
                outcomes << text;
            }
        } catch (const DatabaseError& error) {
            outcomes << error.text();
        }
    return outcomes.join("; ").remove("2026-11-21T").replace(":00 ", " ");
}

/// What the database has of a station, without the marks.
QString rowsOf(Database& database, const QString& station = "S")
{
    QStringList rows = unitlogs::rows(database.connection(), station);
    for (QString& row : rows)
        row = row.section(' ', 0, 4).remove("2026-11-21T").replace(":00 ", " ").trimmed();
    return rows.join(", ");
}

/// Why a database cannot be opened.
QString problemOf(const QString& location, Database::Access access)
{
    try {
        Database database(location, access);
    } catch (const DatabaseError& error) {
        return error.text();
    }
    return {};
}
} // namespace

/// Each test with a new database of both kinds; with the real program where processes matter.
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
        const QString problem = server.create();
        QVERIFY2(problem.isEmpty(), qPrintable(problem));
        logPaths << folder.filePath("many") << folder.filePath("retests");
        QVERIFY(QDir().mkpath(logPaths[0]) && QDir().mkpath(logPaths[1]));
        for (int unit = 0; unit < unitCount; ++unit) {
            const QString serial = QString::number(unit);
            unitlogs::write(logPaths[0], serial,
                            unit % 20 == 0 ? unitlogs::upTo(unit % 43 + 1) : unitlogs::whole());
            if (unit % 10 == 0)
                unitlogs::write(logPaths[1], serial, unitlogs::allBut({{unit % 9, unit % 13}}),
                                unitlogs::noon().addSecs(unit % 20 == 0 ? 3600 : -3600));
        }
        QElapsedTimer time;
        time.start();
        import(folder.filePath("expected"));
        wholeImportMs = static_cast<int>(time.elapsed()) + 50;
        expectedRows = rowsAt(folder.filePath("expected"));
        QVERIFY(expectedRows.filter("attempt").size() > unitCount);
    }

    void init() { location = isServer() ? newDatabase() : folder.filePath(newName()); }

    void stores_data()
    {
        QTest::addColumn<QString>("steps");
        QTest::addColumn<QString>("outcomes");
        QTest::addColumn<QString>("rows");
        const auto row = [](const char* name, const char* steps, const char* outcomes,
                            const char* rows) { QTest::newRow(name) << steps << outcomes << rows; };
        const char* two = "attempt early 12:00 0 19, attempt whole 12:00 1";
        const char* twoWith18 = "attempt early 12:00 0 18, attempt whole 12:00 0, "
                                "missed whole 12:00 18 0, missed whole 12:00 18 1";
        row("what a log can be", "X a/0/whole; S a/0/whole a/0/whole b/0/none; S a/0/whole",
            "10000; 11110; 01000", "attempt a 12:00 1");
        row("clock of the future", "S a/9999999/none a/9999999/miss", "10101",
            "attempt a 2045-11-25T22:39 0, missed a 2045-11-25T22:39 3 5");
        row("18 never", "S whole/0/whole early/0/to18", "20000", two);
        row("18 told later", "S whole/0/whole early/0/to18; S+; S", "20000; 00000; 00000",
            twoWith18);
        row("18 told before", "S+; S whole/0/whole early/0/to18", "00000; 20000", twoWith18);
        row("18 shown later", "S a/0/miss a/1/miss; S x/0/all", "20000; 10000",
            "attempt a 12:00 0, attempt x 12:00 1, missed a 12:00 18 0, missed a 12:00 18 1, "
            "missed a 12:00 3 5, save a 12:01 0 0");
        row("renamed", "X whole/0/whole early/0/to18; rename X S; rename X S",
            "20000; no station is named \"X\"", two);
        row("renamed to itself", "S whole/0/whole early/0/to18; rename S S", "20000", two);
        row("renamed to one that tests 18",
            "X whole/0/whole early/0/to18; S+; rename X S; rename X S",
            "20000; 00000; no station is named \"X\"", twoWith18);
        row("one that tests 18 renamed",
            "X+ a/0/to30 same/5/whole; S a/4/whole same/5/whole own/9/miss; rename X S",
            "20000; 30010",
            "attempt a 12:04 0, attempt own 12:09 0, attempt same 12:05 0, "
            "missed a 12:04 18 0, missed a 12:04 18 1, "
            "missed own 12:09 18 0, missed own 12:09 18 1, missed own 12:09 3 5, "
            "missed same 12:05 18 0, missed same 12:05 18 1, save a 12:00 0 0");
    }

    void stores()
    {
        QFETCH(QString, steps);
        QFETCH(QString, outcomes);
        QFETCH(QString, rows);
        Database database(location, Database::Access::Write);
        QCOMPARE(run(database, steps + "; check"), outcomes);
        QCOMPARE(rowsOf(database), rows);
    }

    void checkNamesWhatDiffers_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::addColumn<QString>("difference");
        const auto row = [](const char* name, const char* fault, const char* difference) {
            QTest::newRow(name) << fault << difference;
        };
        row("complete", "S a/0/miss; SQL UPDATE attempts SET complete = 1",
            "\"12:00 complete 1, ended_at , missed_bands 3:5\", its marks \"12:00 complete 0,");
        row("ended", "S a/0/to20; SQL UPDATE attempts SET ended_at = NULL",
            "ended_at , missed_bands\", its marks \"12:00 complete 0, ended_at 20, missed_bands\"");
        row("a band gone", "S a/0/miss; SQL DELETE FROM missed_bands",
            "missed_bands\", its marks \"12:00 complete 0, ended_at , missed_bands 3:5\"");
        row("a band more", "S a/0/miss; SQL INSERT INTO missed_bands SELECT id, 1, 1 FROM attempts",
            "missed_bands 1:1 3:5\", its marks");
        row("grouping",
            "S a/0/whole a/1/whole; SQL INSERT INTO attempts (station_id, serial, tested_at, "
            "marks, "
            "complete) SELECT station_id, serial, tested_at, marks, 1 FROM repeated_saves",
            "missed_bands | 12:01 complete 1, ended_at , missed_bands\", its marks \"12:00 "
            "complete "
            "1, ended_at , missed_bands\"");
        row("saves alone", "S a/0/whole a/1/whole; SQL DELETE FROM attempts",
            "station \"S\", serial \"a\": its rows say \"\", its marks \"12:01 complete 1");
        row("marks", "S a/0/whole; SQL UPDATE attempts SET marks = substr(marks, 2)",
            "the marks of an attempt in the database are damaged (serial \"a\")");
    }

    void checkNamesWhatDiffers()
    {
        QFETCH(QString, fault);
        QFETCH(QString, difference);
        Database database(location, Database::Access::Write);
        const QString outcomes = run(database, fault + "; check");
        QVERIFY2(outcomes.contains(difference) && outcomes.count(';') == 1, qPrintable(outcomes));
    }

    /// A run saved on its way, two tests that miss the same band, a run broken off, a repair.
    void sameRowsWhateverTheOrder()
    {
        Database database(location, Database::Access::Write);
        QStringList logs{"U/0/miss20", "U/3/miss", "U/34/miss", "U/35/to12", "U/70/whole"};
        int tried = 0;
        do {
            const QString name = QString("S%1").arg(++tried);
            run(database, QString("%1 %2 %3; %1 %2 %4 %5 %6")
                              .arg(name, logs[0], logs[1], logs[2], logs[3], logs[4]));
            QCOMPARE(rowsOf(database, name),
                     QString("attempt U 12:03 0, attempt U 12:34 0, attempt U 12:35 0 12, "
                             "attempt U 13:10 1, missed U 12:03 3 5, missed U 12:34 3 5, "
                             "save U 12:00 0 0"));
        } while (std::next_permutation(logs.begin(), logs.end()));
        QCOMPARE(tried, 120);
        QCOMPARE(run(database, "check"), QString());
    }

    /// Each comes back as it was stored, and its log is known the second time.
    void hostileSerials()
    {
        QStringList serials =
            QString("~ ~\t~\r\n~'~\\~\\x41~\"; --~?~$1~:a~a\tb~%1~{id}").split('~');
        serials += {QString(1000, 'x'), QString(333, QChar(0x4E0A)), QString::fromUtf8("🎛")};
        for (const QChar odd : {0xFEFF, 0xFFFE, 0xFFFF, 0x0001, 0x202E, 0xE000})
            serials += {QString(odd), QString(odd) + "A", QString("A") + odd, QString(2, odd)};
        std::vector<StationLog> logs;
        for (const QString& serial : serials)
            logs.push_back(unitlogs::log(serial, 0, unitlogs::whole()));
        Database database(location, Database::Access::Write);
        const QString station = QString::fromUtf8("\uFEFFodd \uFFFF");
        QCOMPARE(attemptstore::store(database, {station, false}, logs).added, serials.size());
        QCOMPARE(attemptstore::store(database, {station, false}, logs).known, serials.size());
        QStringList found;
        attemptreader::forEachByUnit(database, [&](const Attempt& attempt) {
            found << (attempt.station == station ? attempt.serial : "at another station");
        });
        std::sort(serials.begin(), serials.end(), [](const QString& left, const QString& right) {
            return left.toUtf8() < right.toUtf8();
        });
        QCOMPARE(found, serials);
    }

    /// By serial, time, station and marks, by bytes; never by the order of import.
    void readsInOrder()
    {
        Database database(location, Database::Access::Write);
        run(database, QString::fromUtf8("z b/0/whole; ä b/0/whole; B b/0/miss; B b/0/to9; "
                                        "z B/99/whole; z a/5/whole; a a/-55/whole"));
        QStringList attempts;
        attemptreader::forEachByUnit(database, [&](const Attempt& attempt) {
            attempts << attempt.serial + attempt.station + QString::number(attempt.marks.count());
        });
        QCOMPARE(attempts.join(' '),
                 QString::fromUtf8("Bz227 aa227 az227 bB117 bB226 bz227 bä227"));
    }

    /// Not later than now; one that another log of its attempt replaced counts too.
    void newestLogs()
    {
        Database database(location, Database::Access::Write);
        run(database, "a; B a/0/to30 a/5/to30; z a/0/to9 a/3/whole");
        for (const auto& [minute, expected] :
             {std::pair(5, "B 12:05, a, z 12:03"), std::pair(4, "B 12:00, a, z 12:03"),
              std::pair(2, "B 12:00, a, z 12:00")}) {
            QStringList news;
            const QDateTime now = unitlogs::noon().addSecs(60 * minute);
            for (const auto& station : attemptreader::newestLogs(database, now))
                news << (station.station + ' ' + station.newestAt.mid(11, 5)).trimmed();
            QCOMPARE(news.join(", "), QString(expected));
        }
    }

    void otherEncoding()
    {
        if (isServer()) {
            location = newDatabase("ENCODING LATIN1 LOCALE_PROVIDER libc LOCALE 'C' "
                                   "TEMPLATE template0");
        } else {
            auto database = QSqlDatabase::addDatabase("QSQLITE", location);
            database.setDatabaseName(location);
            QVERIFY(database.open() && database.exec("PRAGMA encoding = 'UTF-16'").isActive() &&
                    database.exec("CREATE TABLE other (a)").isActive());
        }
        QVERIFY(problemOf(location, Database::Access::Write).contains("the encoding UTF8"));
    }

    void carriesVersion1Over()
    {
        Database database(location, Database::Access::Write);
        const QString logs = "S twice/0/miss twice/90/miss early/1/to20 whole/2/whole";
        run(database, logs);
        const QStringList rows = unitlogs::rows(database.connection(), "S");
        QFile version1(VERSION_1);
        QVERIFY(version1.open(QIODevice::ReadOnly));
        for (const QString& sql :
             QString::fromUtf8(version1.readAll()).split(";\n", Qt::SkipEmptyParts))
            Statement(database, sql).run();
        QVERIFY(problemOf(location, Database::Access::Read).contains("older"));
        QSqlQuery query(database.connection());
        QVERIFY(query.exec("SELECT * FROM other_saves")); // reading carries nothing over
        query.finish();
        QCOMPARE(run(database, logs), QString("04000"));
        QCOMPARE(unitlogs::rows(database.connection(), "S"), rows);
        QCOMPARE(run(database, "check"), QString());
        // A program of version 1 that still runs fails.
        QVERIFY(!query.exec("SELECT serial, tested_at, marks FROM other_saves"));
        QVERIFY(query.exec("UPDATE schema_version SET version = 3"));
        for (const auto access : {Database::Access::Read, Database::Access::Write})
            QVERIFY(problemOf(location, access).contains("newer"));
    }

    void importersAtOnce()
    {
        // Each sees a unit's attempts in another order.
        QStringList paths = logPaths;
        std::array<QProcess, 20> importers;
        for (QProcess& importer : importers) {
            begin(importer, location, "S", paths);
            std::reverse(paths.begin(), paths.end());
        }
        for (QProcess& importer : importers)
            QVERIFY2(finish(importer) == 0, importer.readAllStandardError());
        QVERIFY(rowsAt(location) == expectedRows);
        figures::print(QString("importers at once, %1").arg(kind()), 20, 0);
    }

    void killedImports()
    {
        const int times = figures::count(2, 100);
        int killed = 0;
        for (int i = 0; i < times; ++i) {
            const QString station = QString("killed %1").arg(i);
            QProcess importer;
            begin(importer, location, station, logPaths);
            if (!importer.waitForFinished(QRandomGenerator::global()->bounded(wholeImportMs))) {
                importer.kill();
                ++killed;
            }
            finish(importer);
            import(location, station);
            QVERIFY(rowsAt(location, station) == expectedRows);
        }
        figures::print(QString("imports killed, %1").arg(kind()), times, 0,
                       QString("%1 before their end").arg(killed));
    }

    void fullDisk()
    {
        if (isServer())
            return;
        QProcess importer;
        begin(importer, location, "S", logPaths, "117");
        QCOMPARE(finish(importer), 2);
        const QByteArray errors = importer.readAllStandardError();
        QVERIFY2(errors.contains("the database failed: " + location.toUtf8()), errors.constData());
        // Nothing of a transaction that failed is said to be stored.
        QVERIFY(importer.readAllStandardOutput().startsWith("0 logs: 0 new,"));
        import(location);
        QVERIFY(rowsAt(location) == expectedRows);
    }

    /// Away, in words that name the file.
    void deletedWhileOpen()
    {
        if (isServer())
            return;
        Database database(location, Database::Access::Write);
        QVERIFY(QFile::remove(location));
        const QString outcome = run(database, "S");
        QVERIFY2(outcome.startsWith(location + ": ") && outcome.contains("deleted"),
                 qPrintable(outcome));
    }

private:
    const int unitCount = figures::count(200, 1050); // in full more than one transaction

    static bool isServer()
    {
        QFETCH_GLOBAL(bool, isServer);
        return isServer;
    }
    static QString kind() { return isServer() ? "PostgreSQL" : "SQLite"; }

    QString newName() { return QString("store%1").arg(++databases); }

    /// On the server.
    QString newDatabase(const QString& options = {})
    {
        const QString name = newName();
        Database postgres(server.location(), Database::Access::Write);
        Statement(postgres, QString("CREATE DATABASE %1 %2").arg(name, options)).run();
        return server.location().section('/', 0, -2) + '/' + name;
    }

    void import(const QString& database, const QString& station = "S") const
    {
        QProcess importer;
        begin(importer, database, station, logPaths);
        QVERIFY2(finish(importer) == 0, importer.readAllStandardError());
    }

    static QStringList rowsAt(const QString& location, const QString& station = "S")
    {
        Database database(location, Database::Access::Read);
        return unitlogs::rows(database.connection(), station);
    }

    int databases = 0;
    QString location;
    QTemporaryDir folder;
    QStringList logPaths;
    QStringList expectedRows;
    int wholeImportMs = 0;
    PostgresServer server;
};

QTEST_GUILESS_MAIN(TestStore)
#include "test_store.moc"
