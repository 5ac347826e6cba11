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

/// A database that can be taken away and given back.
class TestDatabase
{
public:
    explicit TestDatabase(const QString& driverName)
        : driver(driverName)
    {
        QDir(folder.path()).mkdir("here");
        problem = isServer() ? server.create() : QString();
    }

    /// For --database.
    QString location() const
    {
        return isServer() ? server.location() : folder.filePath("here/attempts.sqlite");
    }

    /// SQLite's folder is renamed: a file alone would be created again.
    bool setAvailable(bool isAvailable)
    {
        if (!isServer())
            return QDir(folder.path())
                .rename(isAvailable ? "away" : "here", isAvailable ? "here" : "away");
        if (isAvailable)
            return server.start();
        server.stop();
        return true;
    }

    /// Each attempt's serial and last save, sorted.
    QStringList runs() const
    {
        auto connection = QSqlDatabase::addDatabase(driver, driver);
        const QUrl url(location());
        connection.setHostName(url.host());
        connection.setPort(url.port());
        connection.setUserName(url.userName());
        connection.setDatabaseName(isServer() ? url.path().mid(1) : location());
        QStringList runs;
        if (connection.open())
            for (QSqlQuery query("SELECT serial, save_number FROM attempts", connection);
                 query.next();)
                runs << query.value(0).toString() + '/' + query.value(1).toString();
        runs.sort();
        return runs;
    }

    QString problem; ///< Why there is no server; empty if there is.

private:
    bool isServer() const { return driver == "QPSQL"; }

    const QString driver;
    QTemporaryDir folder;
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
    void initTestCase() { station::quiet(); }

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
        database = std::make_unique<TestDatabase>(driver);
        QVERIFY2(database->problem.isEmpty(), qPrintable(database->problem));
        kills = outages = fullDisks = 0;
        savesOf.clear();
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
        QCOMPARE(database->runs(), expected);
        QVERIFY(kills > 0 && outages > 0 && (fullDisks > 0 || !disk.isMounted));
        figures::print("units tested, each run once in " + driver, runs, 0,
                       QString("%1 collectors killed, database unavailable %2 times, outbox full "
                               "%3 times")
                           .arg(kills)
                           .arg(outages)
                           .arg(fullDisks));
    }

private:
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
            if (isInOutbox(station::contentOf(logs.filePath("ZORVI_" + serial + ".txt"))))
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
            if (station::contentOf(file.filePath()) == log)
                return true;
        QDirIterator stored(outbox.filePath("Stored"), QDir::Files, QDirIterator::Subdirectories);
        while (stored.hasNext())
            if (station::contentOf(stored.next()) == log)
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
};

QTEST_MAIN(TestChain)
#include "test_chain.moc"
