// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "sequencer/porttable.h"
#include "tests/support/expectedlog.h"
#include "tests/support/figures.h"
#include "tests/support/station.h"

#include <QCheckBox>
#include <QSignalSpy>
#include <QThread>
#include <QToolButton>

/// A station that tests one unit after the other all day, with cables that come out.
class TestEndurance : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        station::quiet();
        QDir::setCurrent(QDir::rootPath()); // not where the logs go
    }

    void unitAfterUnit()
    {
        const int units = figures::count(8, 1000);
        const int settled = figures::count(4, 250);
        const int unitsPerRun = figures::count(4, 1);
        MainWindow window;
        window.show();
        // Keeps JUCE's link to the sequencer open, and with it the thread that takes its time to
        // end.
        SimulatedUnit bystander("Bystander");
        QVERIFY(bystander.plug());
        SimulatedUnit unit;
        const StateWatch watch(window);
        figures::Footprint before{};
        int portsBefore = 0;
        for (int i = 1; i <= units; ++i) {
            connectUnit(window, unit);
            pullCable(window, unit, i);
            connectUnit(window, unit); // at once
            if (i % unitsPerRun == 0)
                run(window, unit, watch, i);
            unit.unplug();
            poll(window, "Device: NOT CONNECTED");
            QVERIFY(!QTest::currentTestFailed());
            if (i == settled) {
                before = figures::Footprint::now();
                portsBefore = memorysequencer::portTable().portCount();
            }
        }
        const auto after = figures::Footprint::now();
        QCOMPARE(memorysequencer::portTable().portCount(), portsBefore);
        figures::compareFlat(before, after);
        figures::print("cable pulled and put back", units, 0,
                       QString("heap after a quarter: %1 kB, at the end: %2 kB")
                           .arg(before.heapKilobytes)
                           .arg(after.heapKilobytes));
        figures::print("complete runs, some controls skipped", units / unitsPerRun, 0);
    }

    /// Seconds of a full cable arrive at once, while the window stands still. Afterwards a
    /// click is answered, every message has arrived, and no room is taken but the first flood's.
    void floods()
    {
        const int rounds = figures::count(2, 100);
        const int perRound = figures::count(5000, 10000);
        MainWindow window;
        SimulatedUnit unit;
        connectUnit(window, unit);
        const station::Hearing hearing(window);
        auto* box = window.findChild<QCheckBox*>("audioOnOff");
        const QSignalSpy clicks(box, SIGNAL(clicked(bool)));
        figures::Footprint before{};
        for (int round = 1; round <= rounds; ++round) {
            for (int i = 0; i < perRound; ++i)
                unit.send({0xB0, i / 128 % 128, i % 128});
            while (memorysequencer::portTable().waitingEvents() > 0)
                QThread::yieldCurrentThread();
            QMetaObject::invokeMethod(box, "click", Qt::QueuedConnection);
            QTRY_COMPARE_WITH_TIMEOUT(clicks.count(), round, 30000);
            QTRY_COMPARE_WITH_TIMEOUT(hearing.messages.size(), round * perRound, 30000);
            if (round == 1)
                before = figures::Footprint::now();
        }
        figures::compareFlat(before, figures::Footprint::now());
        figures::print(QString("messages, %1 at once").arg(perRound), rounds * perRound, 0);
    }

private:
    static void poll(MainWindow& window, const QString& label)
    {
        window.slot_PollDevices();
        QCOMPARE(station::deviceLabel(window), label);
    }

    static void connectUnit(MainWindow& window, SimulatedUnit& unit)
    {
        QVERIFY(unit.plug());
        poll(window, "Device: CONNECTED");
        QVERIFY(station::hears(window, unit));
    }

    static void pullCable(MainWindow& window, SimulatedUnit& unit, int number)
    {
        switch (number % 4) {
        case 0: // within a sweep
            for (int value = 0; value < 100; ++value)
                unit.send({0xB0, 100, value}); // no control's
            unit.unplug();
            break;
        case 1: // back before the next poll: the label stays
            unit.unplug();
            QVERIFY(unit.plug());
            poll(window, "Device: CONNECTED");
            unit.unplug();
            break;
        case 2: // while the notice is open
            QTimer::singleShot(0, &window, [&] {
                unit.unplug();
                poll(window, "Device: NOT CONNECTED");
                connectUnit(window, unit);
                unit.unplug();
                station::openNotice()->accept();
            });
            window.slot_TestComplete();
            break;
        default:
            unit.unplug();
        }
        poll(window, "Device: NOT CONNECTED");
        window.slot_Init();
    }

    /// A run in which every third control is skipped, another third with each unit.
    static void run(MainWindow& window, SimulatedUnit& unit, const StateWatch& watch, int number)
    {
        const QString serial = QString(" %1 of a day ").arg(number); // the blanks count
        const auto isSkipped = [number](int c) { return c % 3 == number % 3; };
        QFile log(QCoreApplication::applicationDirPath() + "/Logs/ZORVI_" + serial + ".txt");
        log.remove();
        station::setSerial(window, serial);
        auto* skip = window.findChild<QToolButton*>("skipSensorButton");
        for (int c = 0; c <= 43; ++c) {
            if (c == 18 || c == 39)
                continue;
            if (!isSkipped(c)) {
                for (const auto& message : passingMessages(c))
                    unit.send(message);
                continue;
            }
            QTRY_COMPARE(watch.armed, c);
            QCOMPARE(watch.problem(), QString());
            skip->click();
        }
        QTimer answer;
        answer.callOnTimeout(&window, [] {
            if (auto* notice = station::openNotice())
                notice->accept();
        });
        answer.start(10);
        QTRY_COMPARE(watch.armed, 0);
        QCOMPARE(watch.problem(), QString());
        QVERIFY(log.open(QIODevice::ReadOnly));
        const QByteArray text = log.readAll();
        const QByteArray date = text.split('\n').value(3).split('\t').value(2);
        QCOMPARE(text, expectedLog(serial.toLatin1(), date,
                                   [&](int c) { return c != 18 && !isSkipped(c); }));
        QVERIFY(log.remove());
    }
};

QTEST_MAIN(TestEndurance)
#include "test_endurance.moc"
