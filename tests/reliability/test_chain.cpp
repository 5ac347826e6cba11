// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/support/figures.h"
#include "tests/support/poll.h"
#include "tests/yield/postgresserver.h"

#include <QProcess>
#include <QRandomGenerator>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QUrl>
#include <QVariant>

#include <memory>

#include <sys/mount.h>
#include <unistd.h>

namespace
{
constexpr int patienceMs = 60000;

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
        return QDir(folder.path())
            .rename(available ? "away" : "here", available ? "here" : "away");
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
    explicit SmallDisk(const QString& folder)
        : path(QFile::encodeName(folder))
        , isMounted(mount("none", path, "tmpfs", 0, "size=160k") == 0)
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
        const SmallDisk disk(outbox.path());

        const int runs = figures::count(40, 1000);
        MainWindow window;
        SimulatedUnit unit;
        QVERIFY(station::plug(unit));
        QCOMPARE(station::labelAfterPoll(window), QString("Device: CONNECTED"));
        for (auto& collector : collectors)
            startCollector(collector);
        for (int run = 1; run <= runs && !QTest::currentTestFailed(); ++run) {
            testUnit(window, unit, QString::number(run));
            disturb();
        }
        collectAll();
        QVERIFY(!QTest::currentTestFailed());
        QCOMPARE(storedSaves(driver), savesOf);
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

    /// A run of some bands, saved once or again and again.
    void testUnit(MainWindow& window, SimulatedUnit& unit, const QString& serial)
    {
        station::click(window, "startTest");
        station::setSerial(window, serial);
        const int saves = random.bounded(1, 4);
        for (int save = 0; save < saves; ++save) {
            unit.send(passingMessages(0).at(save));
            QTRY_COMPARE(coveredBands(*window.findChild<ComponentPanel*>()).size(), save + 1);
            saveLog(window, serial);
        }
    }

    /// Again until it is in the outbox, after old logs are deleted, as an engineer would.
    void saveLog(MainWindow& window, const QString& serial)
    {
        const QString saved = "*-*-" + QString::number(savesOf[serial] + 1) + ".txt";
        for (;;) {
            const QString name = "*-" + QString::number(++savesOf[serial]) + ".txt";
            station::click(window, "log");
            if (isInOutbox(logOf(serial), name))
                return;
            ++fullDisks;
            setAvailable(true);
            const auto pending = [this] { return !outbox.entryList({"*.txt"}, QDir::Files).isEmpty(); };
            QVERIFY(QTest::qWaitFor([&] { return !pending(); }, patienceMs));
            QDir(outbox.filePath("Stored")).removeRecursively();
        }
    }
};

QTEST_MAIN(TestChain)
#include "test_chain.moc"
