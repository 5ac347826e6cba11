// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/support/figures.h"
#include "tests/yield/postgresserver.h"
#include "tests/yield/unitlogs.h"
#include "yield/intake/logimport.h"
#include "yield/store/attemptstore.h"
#include "yield/store/database.h"

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
const QString yieldProgram = QStringLiteral(ZORVI_YIELD);

/// The program on a disk that takes no file of more than 100 kB.
class OnFullDisk : public QProcess
{
protected:
    void setupChildProcess() override
    {
        constexpr rlimit limit = {100000, 100000};
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
        importHere(folder.filePath("expected"), QStringLiteral("S"), logPaths);
        expectedRows = unitlogs::rows(database.connection(), QStringLiteral("S"));
        QVERIFY(expectedRows.filter("attempt").size() > unitCount);
    }

    void sameRowsWhateverTheOrder_data() { addDatabases(); }

    void sameRowsWhateverTheOrder()
    {
        const std::vector<StationLog> logs = {
            unitlogs::log("U", 0, unitlogs::upTo(20)), // saved in mid-run
            unitlogs::log("U", 3, unitlogs::whole()),
            unitlogs::log("U", 10, unitlogs::allBut({{3, 5}, {18, 0}, {18, 1}})),
            unitlogs::log("U", 11, unitlogs::allBut({{3, 5}, {18, 0}, {18, 1}})), // saved again
            unitlogs::log("U", 20, unitlogs::whole()),                            // repaired
        };
        Database database(location(), Database::Access::Write);
        std::vector<std::size_t> order(logs.size());
        std::iota(order.begin(), order.end(), 0);
        QStringList expected;
        int tried = 0;
        do {
            const QString station = QStringLiteral("order %1").arg(tried++);
            std::vector<StationLog> inOrder{unitlogs::log("U", 30, {})};
            for (const std::size_t i : order)
                inOrder.insert(inOrder.end(), {logs[i], logs[order[0]]});
            const StoreCounts counts = attemptstore::store(database, {station, false}, inOrder);
            QCOMPARE(counts.added, 5);
            QCOMPARE(counts.known, 5);
            QCOMPARE(counts.notAttempt, 1);
            const QStringList rows = unitlogs::rows(database.connection(), station);
            if (expected.isEmpty())
                expected = rows;
            QCOMPARE(rows, expected);
        } while (std::next_permutation(order.begin(), order.end()));
        QCOMPARE(tried, 120);
        const auto countOf = [&](const QString& kind) { return expected.filter(kind).size(); };
        QCOMPARE(countOf("attempt U 2026-11-21T12:03:00"), 1);
        QCOMPARE(countOf("attempt U 2026-11-21T12:10:00"), 1);
        QCOMPARE(countOf("attempt U 2026-11-21T12:20:00"), 1);
        QCOMPARE(expected.filter("missed"), {"missed U 2026-11-21T12:10:00 3 5 "});
        QCOMPARE(countOf("save"), 2);
        QCOMPARE(expected.size(), 6);
    }

    void component18_data() { addDatabases(); }

    /// Whether it counts is the station's, not the log's: also for what was imported before.
    void component18()
    {
        Database database(location(), Database::Access::Write);
        const auto before = unitlogs::log("before", 0, unitlogs::whole());
        const auto after = unitlogs::log("after", 1, unitlogs::whole());
        const auto withMark = unitlogs::log("mark", 2, ~BandMarks());
        const auto store = [&](const QString& station, bool tests18,
                               const std::vector<StationLog>& logs) {
            attemptstore::store(database, {station, tests18}, logs);
        };
        const auto missed = [&](const QString& station) {
            return unitlogs::rows(database.connection(), station).filter("missed").size();
        };
        store("without", false, {before, after});
        QCOMPARE(missed("without"), 0);
        store("option", false, {before});
        store("option", true, {});
        store("option", false, {after});
        QCOMPARE(missed("option"), 4);
        store("mark", false, {before, withMark});
        store("mark", false, {after});
        store("mark first", false, {withMark, before, after});
        QCOMPARE(missed("mark"), 4);
        QCOMPARE(unitlogs::rows(database.connection(), "mark"),
                 unitlogs::rows(database.connection(), "mark first"));
        QCOMPARE(unitlogs::rows(database.connection(), "mark").filter(" 0 1 ").size(), 2);
    }

    void refusesANewerSchema_data() { addDatabases(); }

    void refusesANewerSchema()
    {
        Database before(location(), Database::Access::Write);
        QSqlQuery query(before.connection());
        QVERIFY(query.exec("UPDATE schema_version SET version = 3"));
        for (const auto access : {Database::Access::Read, Database::Access::Write}) {
            try {
                Database database(location(), access);
                QFAIL("the database was opened");
            } catch (const DatabaseError& error) {
                QVERIFY2(error.text().contains("newer"), error.what());
                QVERIFY(error.kind() == DatabaseError::Kind::NewerSchema);
            }
        }
        QVERIFY(query.exec("UPDATE schema_version SET version = 2"));
    }

    void twentyImportersAtOnce_data() { addDatabases(); }

    void twentyImportersAtOnce()
    {
        // Each sees a unit's attempts in another order.
        QStringList paths = {logPaths[1]};
        for (int unit = 0; unit < 100; ++unit)
            paths.insert(unit % 2, unitlogs::path(logPaths[0], QString::number(unit)));
        std::array<QProcess, 20> importers;
        for (QProcess& importer : importers) {
            importer.start(yieldProgram, importArguments(location(), "twenty", paths));
            std::reverse(paths.begin(), paths.end());
        }
        for (QProcess& importer : importers)
            QVERIFY2(finished(importer) == 0, importer.readAllStandardError());
        importHere(location(), "one", paths);
        Database database(location(), Database::Access::Read);
        const QStringList rows = unitlogs::rows(database.connection(), "twenty");
        QVERIFY(rows.filter("attempt").size() > 100);
        QCOMPARE(rows, unitlogs::rows(database.connection(), "one"));
        figures::print(QStringLiteral("importers at once, %1").arg(QTest::currentDataTag()), 20, 0);
    }

    void killedImports_data() { addDatabases(); }

    void killedImports()
    {
        const int times = figures::count(2, 100);
        QElapsedTimer wholeImport;
        wholeImport.start();
        importHere(location(), QStringLiteral("measured"), logPaths);
        const auto wholeMs = static_cast<quint32>(wholeImport.elapsed()) + 50;
        int killed = 0;
        for (int i = 0; i < times; ++i) {
            const QString station = QStringLiteral("killed %1").arg(i);
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
        figures::print(QStringLiteral("imports killed, %1").arg(QTest::currentDataTag()), times, 0,
                       QStringLiteral("%1 before their end").arg(killed));
    }

    void fullDisk()
    {
        const QString path = folder.filePath(QStringLiteral("full.sqlite"));
        OnFullDisk importer;
        importer.start(yieldProgram, importArguments(path, QStringLiteral("S"), logPaths));
        QCOMPARE(finished(importer), 2);
        QVERIFY(importer.readAllStandardError().contains("the database failed: "));
        importHere(path, QStringLiteral("S"), logPaths);
        compareRows(path, QStringLiteral("S"));
    }

    void readOnlyDatabase()
    {
        const QString path = folder.filePath(QStringLiteral("readonly.sqlite"));
        importHere(path, QStringLiteral("S"), logPaths);
        QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther);
        QFile::setPermissions(folder.path(), QFile::ReadOwner | QFile::ExeOwner | QFile::ReadOther |
                                                 QFile::ExeOther);
        UnprivilegedProcess importer;
        importer.start(yieldProgram, importArguments(path, QStringLiteral("T"), logPaths));
        const int status = finished(importer);
        UnprivilegedProcess reader;
        reader.start(yieldProgram, {"unit", "1", "--database", path});
        const int readerStatus = finished(reader);
        QFile::setPermissions(folder.path(),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QCOMPARE(status, 2);
        QVERIFY(importer.readAllStandardError().contains("readonly"));
        QCOMPARE(readerStatus, 1); // only the retests show that the station tests component 18
        QVERIFY(reader.readAllStandardOutput().contains("missed Button 9: all"));
        compareRows(path, QStringLiteral("S"));
    }

private:
    const int unitCount = figures::count(200, 1050); // in full more than one transaction

    void addDatabases()
    {
        QTest::addColumn<QString>("location");
        QTest::newRow("SQLite") << folder.filePath(QStringLiteral("attempts.sqlite"));
        QTest::newRow("PostgreSQL") << server.location();
    }

    static QString location()
    {
        QFETCH(QString, location);
        return location;
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

    const QStringList logFolders = {QStringLiteral("many"), QStringLiteral("retests")};
    QTemporaryDir folder;
    QStringList logPaths;
    QStringList expectedRows;
    PostgresServer server;
};

QTEST_GUILESS_MAIN(TestStore)
#include "test_store.moc"
