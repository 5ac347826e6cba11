// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/support/figures.h"
#include "tests/yield/postgresserver.h"
#include "tests/yield/unitlogs.h"
#include "yield/store/attemptreader.h"
#include "yield/store/attemptstore.h"
#include "yield/store/database.h"
#include "yield/store/schema.h"
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
    return importer.waitForFinished(60000) ? importer.exitCode() : -1;
}

/// Stores "SERIAL/MINUTE/MARKS ..." and gives the counts.
QString store(Database& database, const Station& station, const QStringList& words)
{
    std::vector<LogFile> logs;
    for (const QString& word : words) {
        const QStringList parts = word.split('/');
        logs.push_back({unitlogs::log(parts[0], 60 * parts[1].toInt(), parts[2])});
    }
    const StoreCounts counts = attemptstore::store(database, station, logs);
    QString text;
    for (const int count :
         {counts.added, counts.duplicates, counts.empty, counts.otherStations, counts.future})
        text += QString::number(count);
    return text;
}

/// What came of each step: counts, an error or what was read. A step is "STATION" with what is
/// stored, "STATION+" for one that tests component 18, "rename OLD NEW", "list", "news
/// MINUTE", or "SQL ...".
QString run(Database& database, const QString& steps)
{
    QStringList outcomes;
    for (const QString& step : steps.split("; "))
        try {
            const QStringList words = step.split(' ');
            if (words[0] == "SQL")
                Statement(database, step.mid(4)).run();
            else if (words[0] == "list")
                attemptreader::forEachByUnit(database, [&](const Attempt& attempt) {
                    outcomes << QString("%1 %2 %3")
                                        .arg(attempt.serial, attempt.station)
                                        .arg(attempt.marks.count()) +
                                    bandmarks::packed(attempt.marks).left(1).toHex();
                });
            else if (words[0] == "news")
                for (const auto& news : attemptreader::lastLogs(
                         database, unitlogs::noon().addSecs(60 * words[1].toInt())))
                    outcomes << news.station + ' ' + news.testedAt;
            else if (words[0] == "rename")
                attemptstore::renameStation(database, words[1], words[2]);
            else
                outcomes << store(database, {QString(words[0]).remove('+'), words[0].endsWith('+')},
                                  words.mid(1));
        } catch (const DatabaseError& error) {
            outcomes << (error.kind() == DatabaseError::Kind::Data ? "data: " : "") + error.text();
        }
    return outcomes.join("; ").remove("2026-11-21T");
}

/// What the database has of a station, without the marks.
QString rowsOf(Database& database, const QString& station = "S")
{
    QStringList rows = unitlogs::rows(database.connection(), station);
    for (QString& row : rows)
        row = row.section(' ', 0, 4).remove("2026-11-21T").trimmed();
    return rows.join(", ");
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
        QCOMPARE(server.create(), QString());
        logPaths << folder.filePath("many") << folder.filePath("retests");
        QVERIFY(QDir().mkpath(logPaths[0]) && QDir().mkpath(logPaths[1]));
        for (int unit = 0; unit < unitCount; ++unit) {
            const QString serial = QString("/%1").arg(unit);
            unitlogs::write(logPaths[0] + serial, serial,
                            unit % 20 == 0 ? QString("to%1").arg(unit % 43 + 1) : "whole");
            if (unit % 10 == 0)
                unitlogs::write(logPaths[1] + serial, serial,
                                QString("all-%1.%2").arg(unit % 9).arg(unit % 13),
                                unitlogs::noon().addSecs(unit % 20 == 0 ? 3600 : -3600));
        }
        QElapsedTimer time;
        time.start();
        import(folder.filePath("expected"));
        wholeImportMs = static_cast<int>(time.elapsed()) + 50;
        expectedRows = rowsAt(folder.filePath("expected"));
        QVERIFY(expectedRows.filter("attempt").size() > unitCount);
    }

    void init()
    {
        location =
            isServer() ? server.location() : folder.filePath(QString("store%1").arg(++databases));
        if (isServer()) {
            Database old(location, Database::Access::Write);
            QCOMPARE(run(old, "SQL DROP SCHEMA public CASCADE; SQL CREATE SCHEMA public"),
                     QString());
        }
    }

    void steps_data()
    {
        QTest::addColumn<QString>("steps");
        QTest::addColumn<QString>("outcomes");
        QTest::addColumn<QString>("rows"); // what the steps lead to, unless that is damaged
        const auto row = [](const char* name, const char* steps, const QString& outcomes,
                            QString rows = {}) {
            QTest::newRow(name) << QString::fromUtf8(steps)
                                << QString(outcomes).replace('@', "12:00:00")
                                << rows.replace('@', "12:00:00");
        };
        const QString two = "attempt early @ 0 19, attempt whole @ 1";
        const QString twoWith18 = "attempt early @ 0 18, attempt whole @ 0, "
                                  "missed whole @ 18 0, missed whole @ 18 1";
        row("what a log can be", "X a/0/whole; S a/0/whole a/0/whole b/0/to0; S a/0/whole",
            "10000; 11110; 01000", "attempt a @ 1");
        row("clock of the future", "S a/9999999/to0 a/9999999/whole-3.5", "10101",
            "attempt a 2045-11-25T22:39:00 0, missed a 2045-11-25T22:39:00 3 5");
        row("18 never", "S whole/0/whole early/0/to18", "20000", two);
        row("18 told later", "S whole/0/whole early/0/to18; S+; S", "20000; 00000; 00000",
            twoWith18);
        row("18 told before", "S+; S whole/0/whole early/0/to18", "00000; 20000", twoWith18);
        row("18 shown later", "S a/0/whole-3.5 a/1/whole-3.5; S x/0/all", "20000; 10000",
            "attempt a @ 0, attempt x @ 1, missed a @ 18 0, missed a @ 18 1, missed a @ 3 5, "
            "save a 12:01:00 0 0");
        row("renamed", "X whole/0/whole early/0/to18; rename X S; rename X S",
            "20000; no station is named \"X\"", two);
        row("renamed to itself", "S whole/0/whole early/0/to18; rename S S", "20000", two);
        row("renamed to one that tests 18",
            "X whole/0/whole early/0/to18; S+; rename X S; rename X S",
            "20000; 00000; no station is named \"X\"", twoWith18);
        row("one that tests 18 renamed",
            "X+ a/-4/to30 same/5/whole; S a/0/whole same/5/whole own/0/whole-3.5; rename X S",
            "20000; 30010",
            "attempt a @ 0, attempt own @ 0, attempt same 12:05:00 0, missed a @ 18 0, "
            "missed a @ 18 1, missed own @ 18 0, missed own @ 18 1, missed own @ 3 5, "
            "missed same 12:05:00 18 0, missed same 12:05:00 18 1, save a 11:56:00 0 0");

        row("damaged", "S a/0/whole; SQL UPDATE attempts SET marks = substr(marks, 2); list",
            "10000; data: the marks of an attempt in the database are damaged (serial \"a\")");

        // By serial, time, station and marks, by bytes; never by the order of import.
        row("order",
            "z b/0/whole B/99/whole a/5/whole; 🎛 b/0/whole; ￮ b/0/whole-0.0 b/0/whole-0.1 "
            "b/0/to9; "
            "a a/-55/whole; list",
            QString::fromUtf8(
                "30000; 10010; 30000; 10000; B z 227ff; a a 227ff; a z 227ff; b z 227ff; "
                "b ￮ 117ff; b ￮ 226fd; b ￮ 226fe; b 🎛 227ff"));
        // Not later than now; one that another log of its attempt replaced counts too.
        row("news", "a; B a/0/to30 a/5/to30; z a/0/to9 a/3/whole; news 5; news 4; news 2",
            "00000; 20000; 20000; B 12:05:00; a ; z 12:03:00; B @; a ; z 12:03:00; B @; a ; z @");
    }

    void steps()
    {
        QFETCH(QString, steps);
        QFETCH(QString, outcomes);
        QFETCH(QString, rows);
        Database database(location, Database::Access::Write);
        schema::migrate(database);
        QCOMPARE(run(database, steps), outcomes);
        if (!rows.isEmpty())
            QCOMPARE(rowsOf(database), rows);
    }

    /// A run saved on its way, two tests that miss the same band, a run broken off.
    void sameRowsWhateverTheOrder()
    {
        Database database(location, Database::Access::Write);
        schema::migrate(database);
        QStringList logs{"%1/0/to20-3.5", "%1/3/whole-3.5", "%1/34/whole-3.5", "%1/35/to12"};
        int tried = 0;
        do {
            run(database,
                QString("S%1 " + logs.mid(0, 2).join(' ') + "; S%1 " + logs.mid(2).join(' '))
                    .arg(++tried));
            QCOMPARE(rowsOf(database, QString("S%1").arg(tried)),
                     QString("attempt %1 12:03:00 0, attempt %1 12:34:00 0, "
                             "attempt %1 12:35:00 0 12, missed %1 12:03:00 3 5, "
                             "missed %1 12:34:00 3 5, save %1 12:00:00 0 0")
                         .arg(tried));
        } while (std::next_permutation(logs.begin(), logs.end()));
    }

    /// Each comes back as it was stored, and its log is known the second time.
    void hostileSerials()
    {
        QStringList serials =
            QString("~ ~\t~\r\n~'~\\~\\x41~\"; --~?~$1~:a~a\tb~%1~{id}").split('~');
        serials += {QString(1000, 'x'), QString(333, QChar(0x4E0A)), QString::fromUtf8("🎛")};
        for (const QChar odd : {0xFEFF, 0xFFFE, 0xFFFF, 0x0001, 0x202E, 0xE000})
            serials += {QString(odd), QString(odd) + "A", QString("A") + odd, QString(2, odd)};
        std::vector<LogFile> logs;
        for (const QString& serial : serials)
            logs.push_back({unitlogs::log(serial, 0, "whole")});
        Database database(location, Database::Access::Write);
        schema::migrate(database);
        const QString station = QString::fromUtf8("\uFEFFodd \uFFFF");
        QCOMPARE(attemptstore::store(database, {station, false}, logs).added, serials.size());
        QCOMPARE(attemptstore::store(database, {station, false}, logs).duplicates, serials.size());
        QSet<QString> found;
        attemptreader::forEachByUnit(database, [&](const Attempt& attempt) {
            found << (attempt.station == station ? attempt.serial : "at another station");
        });
        QCOMPARE(found, QSet<QString>(serials.begin(), serials.end()));
        // What the tables refuse is the log's fault: the next one may be stored.
        const QString nameless = "SQL INSERT INTO stations (name) VALUES (NULL)";
        QVERIFY(run(database, nameless).startsWith("data: "));
    }

    void otherEncoding()
    {
        if (!isServer())
            return;
        Database utf8(location, Database::Access::Write);
        QCOMPARE(run(utf8, "SQL CREATE DATABASE latin ENCODING LATIN1 LOCALE_PROVIDER libc "
                           "LOCALE 'C' TEMPLATE template0"),
                 QString());
        location.replace("/postgres", "/latin");
        QVERIFY_EXCEPTION_THROWN(Database(location, Database::Access::Write), DatabaseError);
    }

    void carriesVersion1Over()
    {
        Database database(location, Database::Access::Write);
        schema::migrate(database);
        const QString logs = "S twice/0/whole-3.5 twice/90/whole-3.5 early/1/to20 whole/2/whole";
        run(database, logs);
        const QStringList rows = unitlogs::rows(database.connection(), "S");
        QFile version1(VERSION_1);
        QVERIFY(version1.open(QIODevice::ReadOnly));
        QCOMPARE(
            run(database, "SQL " + QString(version1.readAll()).chopped(2).replace(";\n", "; SQL ")),
            QString());
        QVERIFY(run(database, "list").contains("older"));
        const QString old = "SQL SELECT serial, tested_at, marks FROM other_saves";
        QCOMPARE(run(database, old), QString()); // reading carries nothing over
        schema::migrate(database);
        QCOMPARE(run(database, logs), QString("04000"));
        QCOMPARE(unitlogs::rows(database.connection(), "S"), rows);
        // A program of version 1 that still runs fails.
        QVERIFY(run(database, old).contains("other_saves"));
        const QString newer =
            run(database, "SQL UPDATE schema_version SET version = 3; list; S; SQL "
                          "UPDATE schema_version SET version = 2");
        QCOMPARE(newer.count("a newer"), 2);
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
        QVERIFY_EXCEPTION_THROWN(Database(location, Database::Access::Read), DatabaseError);
        QVERIFY(!QFile::exists(location)); // a reader makes none
        QProcess importer;
        begin(importer, location, "S", logPaths, "117");
        QCOMPARE(finish(importer), 2);
        QVERIFY(importer.readAllStandardError().contains("database failed: " + location.toUtf8()));
        // Nothing of a transaction that failed is said to be stored.
        QVERIFY(importer.readAllStandardOutput().startsWith("0 logs: 0 new,"));
        import(location);
        QVERIFY(rowsAt(location) == expectedRows);
    }

private:
    const int unitCount = figures::count(200, 1050); // in full more than one transaction

    static bool isServer()
    {
        QFETCH_GLOBAL(bool, isServer);
        return isServer;
    }
    static QString kind() { return isServer() ? "PostgreSQL" : "SQLite"; }

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
