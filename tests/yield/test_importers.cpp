// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/support/figures.h"
#include "tests/yield/testdatabase.h"
#include "tests/yield/unitlogs.h"
#include "unit/outboxname.h"
#include "yield/store/attemptstore.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <array>

using unitlogs::abortedAt;
using unitlogs::passed;
using unitlogs::without;

/// Several of the real program at once, on a new database of both kinds.
class TestImporters : public QObject
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
        location = folder.filePath("expected");
        QProcess importer;
        start(importer, "S", logPaths);
        QCOMPARE(finish(importer), 0);
        expectedRows = rows();
        QVERIFY(expectedRows.size() > unitCount);
    }

    void init()
    {
        location = isServer() ? server.location() : folder.filePath("database");
        if (isServer())
            testdatabase::empty(&server);
    }

    /// All of them wait for the writers' lock, for the tables too, and store the same logs as two
    /// stations, each in another order.
    void atOnce()
    {
        Importers importers;
        {
            Database database(location, Database::Access::Write);
            const Transaction transaction(database, Database::Access::Write);
            QStringList paths = logPaths;
            for (QProcess& importer : importers) {
                start(importer, paths.first() == logPaths.first() ? "S" : "T", paths);
                std::reverse(paths.begin(), paths.end());
            }
            QTRY_COMPARE_WITH_TIMEOUT(waiting(importers, database), importers.size(), 30000);
        }
        for (QProcess& importer : importers)
            QVERIFY2(finish(importer) == 0, importer.readAllStandardError());
        Database database(location, Database::Access::Read);
        attemptstore::renameStation(database, "T", "S"); // logs without a run are at both
        QCOMPARE(rows(), expectedRows);
        figures::print(QString("importers at once, %1").arg(isServer() ? "PostgreSQL" : "SQLite"),
                       static_cast<int>(importers.size()), 0);
    }

private:
    using Importers = std::array<QProcess, 8>;

    static bool isServer()
    {
        QFETCH_GLOBAL(bool, isServer);
        return isServer;
    }

    /// Runs in one folder, the same logs without their runs in the other.
    void writeLogs()
    {
        logPaths = QStringList{folder.filePath("Stored"), folder.filePath("Logs")};
        for (const QString& path : logPaths)
            QVERIFY(QDir().mkpath(path));
        for (int unit = 0; unit < unitCount; ++unit) {
            const QString serial = QString("/%1").arg(unit);
            const QString run = QString("20261121T115900.000-%1").arg(unit, 16, 16, QChar('0'));
            const BandMarks marks = without(passed(), unit % 9, unit % 13);
            unitlogs::write(logPaths[0] + '/' + OutboxName{run, 1}.fileName(), serial,
                            abortedAt(unit % 40 + 2), unitlogs::noon().addSecs(-60));
            unitlogs::write(logPaths[0] + '/' + OutboxName{run, 2}.fileName(), serial, marks);
            unitlogs::write(logPaths[1] + serial, serial, marks);
        }
    }

    void start(QProcess& importer, const QString& station, const QStringList& paths) const
    {
        importer.start(ZORVI_YIELD,
                       QStringList{"import", "--database", location, "--station", station} + paths);
    }

    static int finish(QProcess& importer)
    {
        return importer.waitForFinished(60000) ? importer.exitCode() : -1;
    }

    QStringList rows() const
    {
        Database database(location, Database::Access::Read);
        return testdatabase::rows(database);
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

    const int unitCount = figures::count(100, 1050); // in full more than one transaction
    QString location;
    QTemporaryDir folder;
    QStringList logPaths;
    QStringList expectedRows;
    PostgresServer server;
};

QTEST_GUILESS_MAIN(TestImporters)
#include "test_importers.moc"
