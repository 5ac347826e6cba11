// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/support/figures.h"
#include "tests/support/poll.h"
#include "tests/yield/postgresserver.h"
#include "yield/store/database.h"

#include <QDirIterator>
#include <QRandomGenerator>

#include <array>

/// A station tests units while its collectors are killed, the database goes away and comes back,
/// and the outbox fills its disk. Each run is in the database once, with its last save.
class TestChain : public QObject
{
    Q_OBJECT

    const juce::ScopedJuceInitialiser_GUI juceLibrary;
    const QDir logs{QCoreApplication::applicationDirPath() + "/Logs"};
    const QDir outbox{logs.filePath("Outbox")};
    QRandomGenerator random{908};
    QTemporaryDir folder;
    PostgresServer server;
    QString location; ///< Of the database.
    bool isAvailable = true;
    std::array<std::unique_ptr<QProcess>, 2> collectors;
    int fullDisks = 0;
    QStringList lastSaves; ///< Each run's serial and save.

private Q_SLOTS:
    void initTestCase()
    {
        station::quiet();
        const QString problem = server.create();
        QVERIFY2(problem.isEmpty(), qPrintable(problem));
        QVERIFY(QDir(folder.path()).mkdir("available"));
    }

    void cleanup()
    {
        collectors = {};
        QProcess::execute("umount", {"--lazy", outbox.path()});
    }

    void chain_data()
    {
        QTest::addColumn<QString>("database");
        QTest::newRow("SQLite") << folder.filePath("available/attempts.sqlite");
        QTest::newRow("PostgreSQL") << server.location();
    }

    void chain()
    {
        QFETCH(QString, database);
        location = database;
        lastSaves.clear();
        fullDisks = 0;
        QDir(logs).removeRecursively();
        QVERIFY(outbox.mkpath("."));
        const int kilobytes = figures::count(64, 400);
        const auto size = QString("size=%1k").arg(kilobytes);
        const bool isDisk =
            QProcess::execute("mount", {"-t", "tmpfs", "-o", size, "none", outbox.path()}) == 0;
        MainWindow window;
        SimulatedUnit unit;
        QVERIFY(station::plug(unit));
        QCOMPARE(station::labelAfterPoll(window), QString("Device: CONNECTED"));
        for (auto& collector : collectors)
            startCollector(collector);
        testUnit(window, unit, "0"); // from the second one on nothing is imported from Logs/
        waitUntilCollected();
        const int runs = figures::count(9, 1000);
        for (int run = 1; run <= runs && !QTest::currentTestFailed(); ++run) {
            testUnit(window, unit, QString::number(run));
            if (run % 3 == 0)
                restartCollector();
            if (run % 12 == 8 || run % 12 == 0)
                setAvailable(run % 12 == 0);
        }
        setAvailable(true);
        waitUntilCollected();
        collectors = {}; // what one was killed over, before it moved the log, is collected now
        QCOMPARE(QProcess::execute(ZORVI_YIELD, collectArguments() + QStringList("--once")), 0);
        QVERIFY(!QTest::currentTestFailed());
        lastSaves.sort();
        QCOMPARE(storedRuns(), lastSaves);
        QVERIFY(fullDisks > 0 || !isDisk);
        figures::print("units tested, each run once in " + QString(QTest::currentDataTag()), runs,
                       0, QString("outbox full %1 times").arg(fullDisks));
    }

private:
    QStringList collectArguments() const
    {
        return {"collect", "--station", "line", "--database", location, logs.path()};
    }

    void startCollector(std::unique_ptr<QProcess>& collector) const
    {
        collector = std::make_unique<QProcess>();
        collector->setStandardOutputFile(QProcess::nullDevice());
        collector->setStandardErrorFile(QProcess::nullDevice());
        collector->start(ZORVI_YIELD, collectArguments());
    }

    void restartCollector()
    {
        auto& collector = collectors.at(random.bounded(2U));
        QCOMPARE(collector->state(), QProcess::Running);
        collector->kill();
        collector->waitForFinished();
        startCollector(collector);
    }

    /// SQLite's folder is renamed: a file alone would be created again.
    void setAvailable(bool available)
    {
        if (available == std::exchange(isAvailable, available))
            return;
        QDir parent(folder.path());
        if (!location.startsWith("postgresql"))
            QVERIFY(available ? parent.rename("unavailable", "available")
                              : parent.rename("available", "unavailable"));
        else if (available)
            QVERIFY(server.start());
        else
            server.stop();
    }

    /// A run of some bands, saved up to three times.
    void testUnit(MainWindow& window, SimulatedUnit& unit, const QString& serial)
    {
        station::click(window, "startTest");
        const auto* fader = window.findChild<ComponentPanel*>();
        const int bands = random.bounded(1, 4);
        int saves = 0;
        for (int band = 1; band <= bands && !QTest::currentTestFailed(); ++band) {
            unit.send(passingMessages(0).at(band));
            QTRY_COMPARE(coveredBands(*fader).size(), band);
            // As the user does it: if the outbox is full, makes room and saves again.
            for (bool isSaved = false; !isSaved && !QTest::currentTestFailed(); ++saves) {
                station::saveLog(window, serial);
                isSaved = isInOutbox(serial);
                if (!isSaved)
                    makeRoom();
            }
        }
        lastSaves << QString("%1/%2").arg(serial).arg(saves);
    }

    void makeRoom()
    {
        ++fullDisks;
        setAvailable(true);
        waitUntilCollected();
        for (QDirIterator stored(outbox.filePath("Stored"), QDir::Files,
                                 QDirIterator::Subdirectories);
             stored.hasNext();)
            QVERIFY(QFile::remove(stored.next()));
    }

    void waitUntilCollected() const
    {
        QTRY_COMPARE_WITH_TIMEOUT(outbox.entryList({"*.txt"}, QDir::Files), QStringList(), 60000);
    }

    bool isInOutbox(const QString& serial) const
    {
        const auto log = station::contentOf(logs.filePath("ZORVI_" + serial + ".txt"));
        for (const char* subfolder : {".", "Stored"}) // where it may be moved meanwhile
            for (QDirIterator file(outbox.filePath(subfolder), QDir::Files,
                                   QDirIterator::Subdirectories);
                 file.hasNext();)
                if (station::contentOf(file.next()) == log)
                    return true;
        return false;
    }

    QStringList storedRuns() const
    {
        Database database(location, Database::Access::Read);
        Statement select(database, "SELECT serial, save_number FROM attempts");
        QStringList runs;
        while (select.next())
            runs << QString("%1/%2").arg(select.value(0).toString()).arg(select.number(1));
        runs.sort();
        return runs;
    }
};

QTEST_MAIN(TestChain)
#include "test_chain.moc"
