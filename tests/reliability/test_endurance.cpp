// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "simulator/memorysequencer.h"
#include "tests/app/expectedlog.h"
#include "tests/passingmessages.h"
#include "tests/reliability/figures.h"
#include "tests/statewatch.h"
#include "tests/station.h"

#include <QToolButton>

#include <thread>

/// A station that tests one unit after the other all day, with cables that come out.
class TestEndurance : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { station::quiet(); }

    void unitAfterUnit()
    {
        const int units = figures::count(24, 1000);
        const int settled = units / 4;
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
                portsBefore = memorysequencer::portCount();
            }
        }
        const auto after = figures::Footprint::now();
        QCOMPARE(memorysequencer::portCount(), portsBefore);
        figures::compareFlat(before, after);
        figures::print("cable pulled and put back: label wrong or deaf", units, 0,
                       QString("heap after unit %1: %2 kB, after unit %3: %4 kB")
                           .arg(settled)
                           .arg(before.heapKilobytes)
                           .arg(units)
                           .arg(after.heapKilobytes));
        figures::print("runs with controls skipped: log or panels wrong", units / unitsPerRun, 0);
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
        case 0: // within a sweep, on the unit's own time
            std::thread([&] {
                for (int value = 0; value < 100; ++value)
                    unit.send({0xB0, 100, value}); // no control's
                unit.unplug();
            }).join();
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
        const QString path = QCoreApplication::applicationDirPath() + "/Logs/ZORVI_" + serial +
                             ".txt";
        const auto isSkipped = [number](int c) { return c % 3 == number % 3; };
        QFile log(path);
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
