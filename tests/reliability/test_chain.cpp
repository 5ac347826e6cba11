// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/support/figures.h"
#include "tests/support/poll.h"
#include "tests/yield/postgresserver.h"

#include <QDirIterator>
#include <QProcess>
#include <QRandomGenerator>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QUrl>
#include <QVariant>

#include <array>
#include <memory>

#include <sys/mount.h>
#include <unistd.h>

namespace
{
constexpr int patienceMs = 60000;

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}

/// A database that can be taken away and given back.
struct TestDatabase {
    virtual ~TestDatabase() = default;
    virtual QString location() const = 0; ///< For --database.
    virtual bool setAvailable(bool available) = 0;
    virtual void configure(QSqlDatabase& connection) const = 0;
};

/// Its folder is renamed: a file alone would be created again.
struct SqliteFile : TestDatabase {
    SqliteFile() { QDir(folder.path()).mkdir("here"); }
    QString location() const override { return folder.filePath("here/attempts.sqlite"); }
    bool setAvailable(bool available) override
    {
        return QDir(folder.path()).rename(available ? "away" : "here", available ? "here" : "away");
    }
    void configure(QSqlDatabase& connection) const override
    {
        connection.setDatabaseName(location());
    }
    const QTemporaryDir folder;
};

struct PostgresDatabase : TestDatabase {
    QString location() const override { return server.location(); }
    bool setAvailable(bool available) override
    {
        if (available)
            return server.start();
        server.stop();
        return true;
    }
    void configure(QSqlDatabase& connection) const override
    {
        const QUrl url(location());
        connection.setHostName(url.host());
        connection.setPort(url.port());
        connection.setUserName(url.userName());
        connection.setDatabaseName(url.path().mid(1));
    }
    PostgresServer server;
};

/// A small disk for the outbox, where root may mount one.
struct SmallDisk {
    SmallDisk(const QString& folder, int kilobytes)
        : path(QFile::encodeName(folder))
        , isMounted(mount("none", path, "tmpfs", 0,
                          QByteArray("size=" + QByteArray::number(kilobytes) + 'k').data()) == 0)
    {
    }
    ~SmallDisk()
    {
        if (isMounted)
            umount2(path, MNT_DETACH);
    }
    const QByteArray path;
    const bool isMounted;
};
} // namespace

/// A station tests units while its collectors are killed, the database goes away and comes back,
/// and the outbox fills its disk. Each run is in the database once, with its last save.
class TestChain : public QObject
{
    Q_OBJECT

    const juce::ScopedJuceInitialiser_GUI juceLibrary;
    const QDir logs{QCoreApplication::applicationDirPath() + "/Logs"};
    const QDir outbox{logs.filePath("Outbox")};
    QRandomGenerator random{908};
    std::unique_ptr<TestDatabase> database;
    bool isAvailable = true;
    std::array<std::unique_ptr<QProcess>, 2> collectors;
    int kills = 0;
    int outages = 0;
    int fullDisks = 0;
    QMap<QString, int> savesOf; ///< By serial.

private Q_SLOTS:
    void initTestCase()
    {
        station::quiet();
        unitlink::keepInputThreadRunning();
    }

    void cleanup()
    {
        collectors = {};
        database.reset();
    }

    void chain_data()
    {
        QTest::addColumn<QString>("driver");
        QTest::newRow("SQLite") << "QSQLITE";
        QTest::newRow("PostgreSQL") << "QPSQL";
    }

    void chain()
    {
        QFETCH(QString, driver);
        createDatabase();
        QVERIFY(!QTest::currentTestFailed());
        QDir(logs).removeRecursively();
        QVERIFY(outbox.mkpath("."));
        const SmallDisk disk(outbox.path(), figures::count(64, 400));
        const int runs = figures::count(9, 1000);
        MainWindow window;
        SimulatedUnit unit;
        QVERIFY(station::plug(unit));
        QCOMPARE(station::labelAfterPoll(window), QString("Device: CONNECTED"));
        for (auto& collector : collectors)
            startCollector(collector);
        testUnit(window, unit, "0"); // from the second one on nothing is imported from Logs/
        QVERIFY(QTest::qWaitFor([this] { return pending().isEmpty(); }, patienceMs));
        for (int run = 1; run <= runs && !QTest::currentTestFailed(); ++run) {
            testUnit(window, unit, QString::number(run));
            disturb(run);
        }
        collectAll();
        QVERIFY(!QTest::currentTestFailed());
        QStringList expected;
        for (auto run = savesOf.begin(); run != savesOf.end(); ++run)
            expected << run.key() + '/' + QString::number(run.value());
        expected.sort();
        QCOMPARE(storedRuns(driver), expected);
        QVERIFY(kills > 0 && outages > 0 && (fullDisks > 0 || !disk.isMounted));
        figures::print("units tested, each run once in " + driver, runs, 0,
                       QString("%1 collectors killed, database unavailable %2 times, outbox full "
                               "%3 times")
                           .arg(kills)
                           .arg(outages)
                           .arg(fullDisks));
    }

private:
    void createDatabase()
    {
        QFETCH(QString, driver);
        kills = outages = fullDisks = 0;
        savesOf.clear();
        if (driver == "QSQLITE") {
            database = std::make_unique<SqliteFile>();
            return;
        }
        auto postgres = std::make_unique<PostgresDatabase>();
        const QString problem = postgres->server.create();
        QVERIFY2(problem.isEmpty(), qPrintable(problem));
        database = std::move(postgres);
    }

    QStringList collectArguments() const
    {
        return {"collect", "--station", "line", "--database", database->location(), logs.path()};
    }

    void startCollector(std::unique_ptr<QProcess>& collector) const
    {
        collector = std::make_unique<QProcess>();
        collector->setStandardOutputFile(QProcess::nullDevice());
        collector->setStandardErrorFile(QProcess::nullDevice());
        collector->start(ZORVI_YIELD, collectArguments());
    }

    /// A run of some bands, saved up to three times.
    void testUnit(MainWindow& window, SimulatedUnit& unit, const QString& serial)
    {
        station::click(window, "startTest");
        station::setSerial(window, serial);
        const auto* fader = window.findChild<ComponentPanel*>();
        const int saves = random.bounded(1, 4);
        for (int save = 1; save <= saves && !QTest::currentTestFailed(); ++save) {
            unit.send(passingMessages(0).at(save));
            QTRY_COMPARE(coveredBands(*fader).size(), save);
            saveLog(window, serial);
        }
    }

    /// As the user does it: if the outbox is full, makes room and saves again.
    void saveLog(MainWindow& window, const QString& serial)
    {
        for (;;) {
            station::click(window, "log");
            ++savesOf[serial];
            if (isInOutbox(contentOf(logs.filePath("ZORVI_" + serial + ".txt"))))
                return;
            ++fullDisks;
            setAvailable(true);
            QVERIFY(QTest::qWaitFor([this] { return pending().isEmpty(); }, patienceMs));
            deleteStored();
        }
    }

    /// As tmpfiles.d does it.
    void deleteStored() const
    {
        QDirIterator stored(outbox.filePath("Stored"), QDir::Files, QDirIterator::Subdirectories);
        while (stored.hasNext())
            QVERIFY(QFile::remove(stored.next()));
    }

    QFileInfoList pending() const { return outbox.entryInfoList({"*.txt"}, QDir::Files); }

    bool isInOutbox(const QByteArray& log) const
    {
        for (const QFileInfo& file : pending()) // before Stored, where one may be moved meanwhile
            if (contentOf(file.filePath()) == log)
                return true;
        QDirIterator stored(outbox.filePath("Stored"), QDir::Files, QDirIterator::Subdirectories);
        while (stored.hasNext())
            if (contentOf(stored.next()) == log)
                return true;
        return false;
    }

    void setAvailable(bool available)
    {
        if (isAvailable == available)
            return;
        isAvailable = available;
        outages += available ? 0 : 1;
        QVERIFY(database->setAvailable(available));
    }

    /// A collector is killed and started again, and the database goes or comes back.
    void disturb(int run)
    {
        if (run % 3 == 0) {
            auto& collector = collectors.at(random.bounded(2U));
            collector->kill();
            collector->waitForFinished();
            ++kills;
            startCollector(collector);
        }
        if (run % 12 == 0 || run % 12 == 8)
            setAvailable(run % 12 == 0);
    }

    /// What was killed before it was moved is collected too.
    void collectAll()
    {
        setAvailable(true);
        QVERIFY(QTest::qWaitFor([this] { return pending().isEmpty(); }, patienceMs));
        collectors = {};
        QProcess once;
        once.start(ZORVI_YIELD, collectArguments() + QStringList("--once"));
        QVERIFY(once.waitForFinished(patienceMs));
        QVERIFY2(once.exitCode() == 0, once.readAllStandardError());
    }

    /// Each attempt's serial and last save.
    QStringList storedRuns(const QString& driver) const
    {
        QStringList runs;
        auto connection = QSqlDatabase::addDatabase(driver, driver);
        database->configure(connection);
        if (connection.open())
            for (QSqlQuery query("SELECT serial, save_number FROM attempts", connection);
                 query.next();)
                runs << query.value(0).toString() + '/' + query.value(1).toString();
        runs.sort();
        return runs;
    }
};

QTEST_MAIN(TestChain)
#include "test_chain.moc"
