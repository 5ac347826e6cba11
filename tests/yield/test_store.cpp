// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/support/figures.h"
#include "tests/yield/postgresserver.h"
#include "tests/yield/unitlogs.h"
#include "yield/intake/logimport.h"
#include "yield/store/attemptreader.h"
#include "yield/store/attemptstore.h"
#include "yield/store/database.h"
#include "yield/store/statement.h"

#include <QDir>
#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <array>
#include <csignal>
#include <numeric>
#include <sys/resource.h>

namespace
{
constexpr int patienceMs = 60000;
const QString yieldProgram = QString(ZORVI_YIELD);

/// The program on a disk that takes no file of more than 60 kB.
class OnFullDisk : public QProcess
{
protected:
    void setupChildProcess() override
    {
        constexpr rlimit limit = {60000, 60000};
        setrlimit(RLIMIT_FSIZE, &limit);
        signal(SIGXFSZ, SIG_IGN); // the write fails instead, as on a full disk
    }
};

int finished(QProcess& process)
{
    return process.waitForFinished(patienceMs) && process.exitStatus() == QProcess::NormalExit
               ? process.exitCode()
               : -1;
}
} // namespace

/// The store on both databases, with the real program where processes matter.
class TestStore : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        const QString problem = server.create();
        QVERIFY2(problem.isEmpty(), qPrintable(problem));
        for (const QString& name : logFolders) {
            QVERIFY(QDir().mkpath(folder.filePath(name)));
            logPaths << folder.filePath(name);
        }
        for (int unit = 0; unit < unitCount; ++unit)
            unitlogs::write(logPaths[0], QString::number(unit),
                            unit % 20 == 0 ? unitlogs::upTo(unit % 43 + 1) : unitlogs::whole());
        for (int unit = 0; unit < unitCount; unit += 10)
            unitlogs::write(logPaths[1], QString::number(unit),
                            unitlogs::allBut({{unit % 9, unit % 13}}),
                            unitlogs::noon().addSecs(unit % 20 == 0 ? 3600 : -3600));
        Database database(folder.filePath("expected"), Database::Access::Write);
        importHere(folder.filePath("expected"), QString("S"), logPaths);
        expectedRows = unitlogs::rows(database.connection(), QString("S"));
        QVERIFY(expectedRows.filter("attempt").size() > unitCount);
    }

    void sameRowsWhateverTheOrder_data() { addDatabases(); }

    /// A run saved on its way, two tests that miss the same band, a run broken off, a repair.
    void sameRowsWhateverTheOrder()
    {
        const BandMarks missing = unitlogs::allBut({{3, 5}, {18, 0}, {18, 1}});
        const std::vector<StationLog> logs = {
            unitlogs::log("U", 0, missing & unitlogs::upTo(20)), unitlogs::log("U", 3, missing),
            unitlogs::log("U", 34, missing), unitlogs::log("U", 35, unitlogs::upTo(12)),
            unitlogs::log("U", 70, unitlogs::whole())};
        Database database(location(), Database::Access::Write);
        std::vector<std::size_t> order(logs.size());
        std::iota(order.begin(), order.end(), 0);
        int tried = 0;
        do {
            const QString station = QString("order %1").arg(tried++);
            std::vector<StationLog> inOrder{unitlogs::log("U", 30, {})};
            for (const std::size_t i : order)
                inOrder.insert(inOrder.end(), {logs[i], logs[order[0]]});
            const auto half = inOrder.begin() + 5;
            StoreCounts counts =
                attemptstore::store(database, {station, false}, {inOrder.begin(), half});
            counts += attemptstore::store(database, {station, false}, {half, inOrder.end()});
            QCOMPARE(counts.added, 5);
            QCOMPARE(counts.known, 5);
            QCOMPARE(counts.notAttempt, 1);
            const QStringList rows = unitlogs::rows(database.connection(), station);
            QStringList heads;
            for (const QString& row : rows)
                heads << row.section(' ', 0, 4);
            QCOMPARE(heads,
                     (QStringList{
                         "attempt U 2026-11-21T12:03:00 0 ", "attempt U 2026-11-21T12:34:00 0 ",
                         "attempt U 2026-11-21T12:35:00 0 12", "attempt U 2026-11-21T13:10:00 1 ",
                         "missed U 2026-11-21T12:03:00 3 5", "missed U 2026-11-21T12:34:00 3 5",
                         "save U 2026-11-21T12:00:00 0 0"}));
        } while (std::next_permutation(order.begin(), order.end()));
        QCOMPARE(tried, 120);
        QCOMPARE(differences(database), QString());
    }

    void component18_data()
    {
        QTest::addColumn<QString>("first");  // what the station is told and shows at first
        QTest::addColumn<QString>("second"); // and then
        QTest::addColumn<QStringList>("missed");
        const QString whole = "missed whole 2026-11-21T12:00:00 18 %1 ";
        const QStringList both{whole.arg(0), whole.arg(1)};
        const auto row = [](const char* name, const char* first, const char* second,
                            const QStringList& missed) {
            QTest::newRow(name) << first << second << missed;
        };
        row("never", "whole", "early", {});
        row("told later", "whole early", "option", both);
        row("told before", "option", "early whole", both);
        row("forgotten", "option", "", {});
        row("shown later", "early whole", "mark", both);
        row("shown before", "mark", "whole early", both);
    }

    /// Whether it counts is the station's, not the log's: also for what was imported before.
    void component18()
    {
        QFETCH(QString, first);
        QFETCH(QString, second);
        QFETCH(QStringList, missed);
        for (const QString& location : {file("component18"), server.location()}) {
            Database database(location, Database::Access::Write);
            const QString station = QTest::currentDataTag();
            for (const QString& words : {first, second}) {
                std::vector<StationLog> logs;
                if (words.contains("whole"))
                    logs.push_back(unitlogs::log("whole", 0, unitlogs::whole()));
                if (words.contains("early")) // broken off before 18, or just behind it
                    logs.push_back(unitlogs::log("early", 0, unitlogs::upTo(18)));
                if (words.contains("mark"))
                    logs.push_back(unitlogs::log("mark", 0, ~BandMarks()));
                attemptstore::store(database, {station, words.contains("option")}, logs);
            }
            const QStringList rows = unitlogs::rows(database.connection(), station);
            QCOMPARE(rows.filter("missed"), missed);
            if (!missed.isEmpty())
                QCOMPARE(rows.filter("attempt early 2026-11-21T12:00:00 0 18 ").size(), 1);
            QCOMPARE(differences(database), QString());
        }
    }

    void hostileSerials_data() { addDatabases(); }

    /// Each comes back as it was read, and its log is known at the second import.
    void hostileSerials()
    {
        QStringList serials =
            QString("~ ~\t~\r\n~'~\\~\\x41~\"; --~?~$1~:a~a\tb~%1~{id}").split('~');
        serials += {QString(1000, 'x'), QString(333, QChar(0x4E0A)), QString::fromUtf8("🎛")};
        for (const QChar odd : {0xFEFF, 0xFFFE, 0xFFFF, 0x0001, 0x202E, 0xE000})
            serials += {QString(odd), QString(odd) + "A", QString("A") + odd, QString(2, odd)};
        std::vector<StationLog> logs;
        for (const QString& serial : serials) {
            QString reason;
            const QByteArray bytes =
                unitlogs::lines(serial, unitlogs::noon(), unitlogs::whole()).join('\n').toUtf8();
            const auto log = stationlog::read(bytes + '\n', reason);
            QVERIFY2(log && log->serial == serial, qPrintable(reason));
            logs.push_back(*log);
        }
        Database database(location(), Database::Access::Write);
        const QString station = QString::fromUtf8("\uFEFFodd \uFFFF");
        QCOMPARE(attemptstore::store(database, {station, false}, logs).added, serials.size());
        QCOMPARE(attemptstore::store(database, {station, false}, logs).known, serials.size());
        QStringList found;
        attemptreader::forEachByUnit(database, [&](const Attempt& attempt) {
            if (attempt.station == station)
                found << attempt.serial;
        });
        std::sort(serials.begin(), serials.end(), [](const QString& left, const QString& right) {
            return left.toUtf8() < right.toUtf8();
        });
        QCOMPARE(found, serials);
        for (const QString& serial : qAsConst(serials)) {
            int times = 0;
            attemptreader::forEachOf(database, serial, [&](const Attempt& attempt) {
                times += attempt.station == station && attempt.serial == serial ? 1 : 0;
            });
            QCOMPARE(times, 1);
        }
    }

    void readsInOrder_data() { addDatabases(); }

    /// By serial, time, station and marks, by bytes; never by the order of import.
    void readsInOrder()
    {
        Database database(location(), Database::Access::Write);
        const auto add = [&](const char* station, const char* serial, int minute,
                             const BandMarks& marks = unitlogs::whole()) {
            attemptstore::store(database, {station, false}, {unitlogs::log(serial, minute, marks)});
        };
        add("z", "order-b", 0);
        add("\xC3\xA4", "order-b", 0);
        add("B", "order-b", 0, unitlogs::allBut({{0, 0}, {18, 0}, {18, 1}}));
        add("B", "order-b", 0, unitlogs::upTo(9));
        add("z", "order-B", 99);
        add("z", "order-a", 5);
        add("a", "order-a", 5 - 60);
        QStringList byUnit;
        QStringList byTime;
        const auto noteIn = [](QStringList& list) {
            return [&list](const Attempt& attempt) {
                if (attempt.serial.startsWith("order-"))
                    list << attempt.serial.mid(6) + attempt.station +
                                QString::number(attempt.marks.count());
            };
        };
        attemptreader::forEachByUnit(database, noteIn(byUnit));
        attemptreader::forEachByTime(database, noteIn(byTime));
        const QString umlaut = QString::fromUtf8("\xC3\xA4");
        QCOMPARE(byUnit.join(' '),
                 QString("Bz227 aa227 az227 bB117 bB226 bz227 b%1227").replace("%1", umlaut));
        QCOMPARE(byTime.join(' '),
                 QString("aa227 bB117 bB226 bz227 b%1227 az227 Bz227").replace("%1", umlaut));
        QStringList news;
        for (const auto& one :
             attemptreader::newestLogs(database, unitlogs::noon().addSecs(98 * 60)))
            if (QStringList{"B", "a", "z"}.contains(one.station))
                news << one.station + one.newestAt.mid(10);
        QCOMPARE(news, (QStringList{"BT12:00:00", "aT11:05:00", "zT12:05:00"}));
    }

    void newestLogs_data() { addDatabases(); }

    /// Not later than now; one that another log of its attempt replaced counts too.
    void newestLogs()
    {
        Database database(freshDatabase("news"), Database::Access::Write);
        attemptstore::store(database, {"silent", false}, {});
        for (const int minute : {0, 5})
            attemptstore::store(database, {"one", false},
                                {unitlogs::log("a", minute, unitlogs::upTo(30))});
        const auto newestAt = [&](int minute) {
            QStringList news;
            for (const auto& station :
                 attemptreader::newestLogs(database, unitlogs::noon().addSecs(60 * minute)))
                news << station.station + station.newestAt.mid(10);
            return news;
        };
        QCOMPARE(newestAt(5), (QStringList{"oneT12:05:00", "silent"}));
        QCOMPARE(newestAt(4), (QStringList{"oneT12:00:00", "silent"}));
    }

    void otherEncoding()
    {
        const QString path = folder.filePath("utf16.sqlite");
        {
            auto database = QSqlDatabase::addDatabase("QSQLITE", path);
            database.setDatabaseName(path);
            QVERIFY(database.open() && database.exec("PRAGMA encoding = 'UTF-16'").isActive() &&
                    database.exec("CREATE TABLE other (a)").isActive());
        }
        QSqlDatabase::removeDatabase(path);
        QVERIFY_EXCEPTION_THROWN(Database(path, Database::Access::Write), DatabaseError);
    }

    void carriesVersion1Over_data() { addDatabases(); }

    void carriesVersion1Over()
    {
        const QString path = freshDatabase("version1");
        const BandMarks missing = unitlogs::allBut({{3, 5}, {18, 0}, {18, 1}});
        const std::vector<StationLog> logs = {unitlogs::log("twice", 0, missing),
                                              unitlogs::log("twice", 90, missing),
                                              unitlogs::log("early", 1, unitlogs::upTo(20)),
                                              unitlogs::log("whole", 2, unitlogs::whole())};
        Database database(path, Database::Access::Write);
        attemptstore::store(database, {"S", false}, logs);
        const QStringList rows = unitlogs::rows(database.connection(), "S");
        QFile version1(VERSION_1);
        QVERIFY(version1.open(QIODevice::ReadOnly));
        for (const QString& sql :
             QString::fromUtf8(version1.readAll()).split(";\n", Qt::SkipEmptyParts))
            Statement(database, sql).run();
        QVERIFY(problemOf(path, Database::Access::Read).contains("older"));
        QSqlQuery query(database.connection());
        QVERIFY(query.exec("SELECT * FROM other_saves")); // reading carries nothing over
        query.finish();
        QCOMPARE(attemptstore::store(database, {"S", false}, logs).known, 4);
        QCOMPARE(unitlogs::rows(database.connection(), "S"), rows);
        QCOMPARE(differences(database), QString());
        // A program of version 1 that still runs fails.
        QVERIFY(!query.exec("SELECT serial, tested_at, marks FROM other_saves"));
        QVERIFY(query.exec("UPDATE schema_version SET version = 3"));
        for (const auto access : {Database::Access::Read, Database::Access::Write})
            QVERIFY(problemOf(path, access).contains("newer"));
    }

    void checkNamesWhatDiffers_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::addColumn<QString>("part"); // of the only line
        const auto row = [](const char* name, const char* fault, const QString& part) {
            QTest::newRow(name) << fault << part;
        };
        const QString missing = "complete 0, ended_at , missed_bands 3:5";
        row("nothing", "SELECT 1", "");
        row("complete", "UPDATE attempts SET complete = 1 WHERE serial = 'bands'",
            "complete 1, ended_at , missed_bands 3:5; by the marks: " + missing);
        row("ended", "UPDATE attempts SET ended_at = NULL WHERE serial = 'early'",
            "ended_at , missed_bands; by the marks: complete 0, ended_at 20, missed_bands");
        row("a band gone", "DELETE FROM missed_bands WHERE band = 5", "by the marks: " + missing);
        row("a band more",
            "INSERT INTO missed_bands SELECT id, 1, 1 FROM attempts WHERE serial = 'early'",
            "missed_bands 1:1; by the marks");
        row("a band of nothing",
            "PRAGMA foreign_keys = OFF; INSERT INTO missed_bands VALUES (99, 1, 1)", "1 missed");
        row("grouping",
            "INSERT INTO attempts (station_id, serial, tested_at, marks, complete) "
            "SELECT station_id, serial, tested_at, marks, 1 FROM repeated_saves",
            "12:01:00: complete 1, ended_at , missed_bands; by the marks: no attempt");
        row("saves alone", "DELETE FROM attempts WHERE serial = 'again'",
            "12:01:00: no attempt; by the marks: complete 1");
    }

    void checkNamesWhatDiffers()
    {
        QFETCH(QString, fault);
        QFETCH(QString, part);
        Database database(file(QString("check %1").arg(QTest::currentDataTag())),
                          Database::Access::Write);
        attemptstore::store(
            database, {"S", false},
            {unitlogs::log("bands", 0, unitlogs::allBut({{3, 5}, {18, 0}, {18, 1}})),
             unitlogs::log("early", 0, unitlogs::upTo(20)),
             unitlogs::log("again", 0, unitlogs::whole()),
             unitlogs::log("again", 1, unitlogs::whole())});
        for (const QString& statement : fault.split("; "))
            QVERIFY(QSqlQuery(database.connection()).exec(statement));
        const QString said = differences(database);
        QVERIFY2(said.contains(part) && said.isEmpty() == part.isEmpty() && !said.contains('\n'),
                 qPrintable(said));
    }

    void stationRename_data() { addDatabases(); }

    /// What comes out is what one station would have had.
    void stationRename()
    {
        Database database(location(), Database::Access::Write);
        const BandMarks whole = unitlogs::whole();
        const std::vector<StationLog> first = {unitlogs::log("both", 0, unitlogs::upTo(30)),
                                               unitlogs::log("same", 5, whole),
                                               unitlogs::log("first", 9, unitlogs::upTo(18))};
        const std::vector<StationLog> second = {unitlogs::log("both", 4, whole),
                                                unitlogs::log("same", 5, whole)};
        attemptstore::store(database, {"wrong", true}, first);
        QCOMPARE(attemptstore::store(database, {"right", false}, second).elsewhere, 1);
        attemptstore::store(database, {"expected", true}, first);
        attemptstore::store(database, {"expected", false}, second);
        attemptstore::renameStation(database, "wrong", "mistyped");
        attemptstore::renameStation(database, "mistyped", "right");
        QCOMPARE(unitlogs::rows(database.connection(), "right"),
                 unitlogs::rows(database.connection(), "expected"));
        QCOMPARE(differences(database), QString());
        for (const char* gone : {"wrong", "mistyped"})
            QVERIFY_EXCEPTION_THROWN(attemptstore::renameStation(database, gone, "x"),
                                     DatabaseError);
    }

    /// A copy of a database in use, put back some time later.
    void backup()
    {
        const QString path = file("backup");
        importHere(path, "S", {logPaths[0]});
        {
            Database user(path, Database::Access::Read);
            Database other(path, Database::Access::Read);
            const Transaction reading(other, Database::Access::Read);
            QSqlQuery copy(user.connection());
            QVERIFY(copy.exec("VACUUM INTO '" + path + ".copy'"));
        }
        importHere(path, "S", logPaths);
        QVERIFY(QFile::remove(path) && QFile::rename(path + ".copy", path));
        importHere(path, "S", logPaths);
        compareRows(path, "S");
    }

    void twentyImportersAtOnce_data() { addDatabases(); }

    void twentyImportersAtOnce()
    {
        // Each sees a unit's attempts in another order.
        QStringList paths = {logPaths[1]};
        for (int unit = 0; unit < 100; ++unit)
            paths.insert(unit % 2, unitlogs::path(logPaths[0], QString::number(unit)));
        const QString fresh = freshDatabase("twenty");
        std::array<QProcess, 20> importers;
        for (QProcess& importer : importers) {
            importer.start(yieldProgram, importArguments(fresh, "twenty", paths));
            std::reverse(paths.begin(), paths.end());
        }
        for (QProcess& importer : importers)
            QVERIFY2(finished(importer) == 0, importer.readAllStandardError());
        importHere(fresh, "one", paths);
        Database database(fresh, Database::Access::Read);
        const QStringList rows = unitlogs::rows(database.connection(), "twenty");
        QVERIFY(rows.filter("attempt").size() > 100);
        QCOMPARE(rows, unitlogs::rows(database.connection(), "one"));
        figures::print(QString("importers at once, %1").arg(QTest::currentDataTag()), 20, 0);
    }

    void killedImports_data() { addDatabases(); }

    void killedImports()
    {
        const int times = figures::count(2, 100);
        QElapsedTimer wholeImport;
        wholeImport.start();
        importHere(location(), QString("measured"), logPaths);
        const auto wholeMs = static_cast<quint32>(wholeImport.elapsed()) + 50;
        int killed = 0;
        for (int i = 0; i < times; ++i) {
            const QString station = QString("killed %1").arg(i);
            QProcess importer;
            importer.start(yieldProgram, importArguments(location(), station, logPaths));
            const auto ms = static_cast<int>(QRandomGenerator::global()->bounded(wholeMs));
            if (!importer.waitForFinished(ms)) {
                importer.kill();
                ++killed;
            }
            finished(importer);
            importHere(location(), station, logPaths);
            compareRows(location(), station);
        }
        figures::print(QString("imports killed, %1").arg(QTest::currentDataTag()), times, 0,
                       QString("%1 before their end").arg(killed));
    }

    void fullDisk()
    {
        const QString path = file("full");
        OnFullDisk importer;
        importer.start(yieldProgram, importArguments(path, "S", logPaths));
        QCOMPARE(finished(importer), 2);
        const QByteArray errors = importer.readAllStandardError();
        QVERIFY2(errors.contains("the database failed: " + path.toUtf8()), errors.constData());
        // Nothing of a transaction that failed is said to be stored.
        QVERIFY(importer.readAllStandardOutput().startsWith("0 logs: 0 new,"));
        importHere(path, "S", logPaths);
        compareRows(path, "S");
    }

    /// Away, in words that name the file.
    void deletedWhileOpen()
    {
        const QString path = file("deleted");
        Database database(path, Database::Access::Write);
        QVERIFY(QFile::remove(path));
        try {
            attemptstore::store(database, {"S", false}, {});
            QFAIL("stored into a deleted file");
        } catch (const DatabaseError& error) {
            QVERIFY(error.kind() == DatabaseError::Kind::Away);
            QVERIFY2(error.text().startsWith(path + ": ") && error.text().contains("deleted"),
                     error.what());
        }
    }

private:
    const int unitCount = figures::count(200, 1050); // in full more than one transaction

    QString file(const QString& name) const { return folder.filePath(name + ".sqlite"); }

    void addDatabases()
    {
        QTest::addColumn<QString>("location");
        QTest::newRow("SQLite") << file("attempts");
        QTest::newRow("PostgreSQL") << server.location();
    }

    static QString location()
    {
        QFETCH(QString, location);
        return location;
    }

    /// One without tables, of the kind of the row.
    QString freshDatabase(const QString& name) const
    {
        if (location() != server.location())
            return file(name);
        Database database(location(), Database::Access::Write);
        QSqlQuery(database.connection()).exec("CREATE DATABASE " + name);
        return server.location().section('/', 0, -2) + '/' + name;
    }

    /// Why a database cannot be opened.
    static QString problemOf(const QString& path, Database::Access access)
    {
        try {
            Database database(path, access);
        } catch (const DatabaseError& error) {
            return error.text();
        }
        return {};
    }

    /// A line each.
    static QString differences(Database& database)
    {
        QStringList lines;
        attemptstore::check(database, [&](const QString& line) { lines << line; });
        return lines.join('\n');
    }

    static QStringList importArguments(const QString& database, const QString& station,
                                       const QStringList& paths)
    {
        return QStringList{"import", "--database", database, "--station", station} + paths;
    }

    static void importHere(const QString& database, const QString& station,
                           const QStringList& paths)
    {
        QString text;
        QTextStream stream(&text);
        QVERIFY2(logimport::run({database, {station, false}, paths}, stream, stream) == 0,
                 qPrintable(text));
    }

    void compareRows(const QString& path, const QString& station) const
    {
        Database database(path, Database::Access::Read);
        QVERIFY(unitlogs::rows(database.connection(), station) == expectedRows);
    }

    const QStringList logFolders = {QString("many"), QString("retests")};
    QTemporaryDir folder;
    QStringList logPaths;
    QStringList expectedRows;
    PostgresServer server;
};

QTEST_GUILESS_MAIN(TestStore)
#include "test_store.moc"
