// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/support/figures.h"
#include "tests/support/poll.h"

#include <QDir>

#include <atomic>
#include <thread>

#include <malloc.h>

using memorysequencer::portTable;

namespace
{
/// How many threads and descriptors there are.
QVector<int> held()
{
    const auto entries = [](const char* folder) {
        return QDir(folder).entryList(QDir::AllEntries | QDir::System).size();
    };
    return {entries("/proc/self/task"), entries("/proc/self/fd")};
}

int heapKilobytes()
{
    const auto heap = mallinfo2();
    return static_cast<int>((heap.uordblks + heap.hblkhd) / 1024);
}
constexpr int cachesKilobytes = 1024; // may come on top

/// A second of a full cable at once, of no control.
constexpr int floodSize = 1000;
void sendFlood(SimulatedUnit& unit)
{
    for (int i = 0; i < floodSize; ++i)
        unit.send({0xB0, 100, i % 128});
}
} // namespace

/// A station that tests one unit after the other all day, with cables that come out.
class TestEndurance : public QObject
{
    Q_OBJECT

    const juce::ScopedJuceInitialiser_GUI juceLibrary;
    int idlePorts = 0;

private Q_SLOTS:
    void initTestCase()
    {
        station::quiet();
        QDir::setCurrent(QDir::rootPath()); // not where the logs go
    }

    void unitAfterUnit()
    {
        const int units = figures::count(8, 1000);
        const int unitsPerRun = figures::count(4, 1);
        MainWindow window;
        window.show();
        SimulatedUnit unit;
        const StateWatch watch(window);
        int heap = 0;
        QVector<int> before;
        QVERIFY(unit.plug());
        station::labelAfterPoll(window);
        unit.unplug();
        station::labelAfterPoll(window);
        idlePorts = portTable().portCount();
        for (int i = 1; i <= units; ++i) {
            connectUnit(window, unit);
            sendFlood(unit); // the cable comes out within it,
            unit.unplug();
            if (i % 2 == 0) { // and is back before the next poll: the label stays
                QVERIFY(station::plug(unit));
                poll(window, true);
                QVERIFY(station::receives(window, unit));
                unit.unplug();
            }
            poll(window, false);
            connectUnit(window, unit); // at once
            const station::ReceivedMessages received(window);
            sendFlood(unit);
            QTRY_COMPARE(received.messages.size(), floodSize);
            if (i % unitsPerRun == 0)
                run(window, unit, watch, i);
            unit.unplug();
            poll(window, false);
            QVERIFY(!QTest::currentTestFailed());
            if (i == figures::count(4, 250)) {
                heap = heapKilobytes();
                before = held();
            }
        }
        QCOMPARE(held(), before);
        QVERIFY(heapKilobytes() <= heap + cachesKilobytes);
        figures::print("cable pulled and put back", units, 0,
                       QString("heap after a quarter: %1 kB, at the end: %2 kB")
                           .arg(heap)
                           .arg(heapKilobytes()));
        figures::print(QString("messages, %1 at once").arg(floodSize), units * floodSize, 0);
        figures::print("whole runs, some controls skipped", units / unitsPerRun, 0);
    }

    /// In a flood, with the notice open, the station ends at once and in order, and leaves nothing
    /// that calls into it.
    void exits()
    {
        const int rounds = figures::count(3, 50);
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        const int ports = portTable().portCount();
        for (int i = 0; i < rounds; ++i) {
            auto window = std::make_unique<MainWindow>();
            window->show();
            station::labelAfterPoll(*window);
            std::atomic<bool> stop{false};
            std::thread flood([&] {
                for (int value = 0; !stop; value = (value + 1) % 128)
                    unit.send({0xB0, value % 13 + 1, value});
            });
            QTimer::singleShot(0, window.get(), SLOT(slot_TestComplete()));
            // Again and again: a notice comes before the window that it blocks.
            QTimer closer;
            closer.callOnTimeout(qApp, &QApplication::closeAllWindows);
            closer.start(50);
            const int status = QApplication::exec();
            window.reset();
            stop = true;
            flood.join();
            QCOMPARE(status, 0);
            QCOMPARE(portTable().portCount(), ports);
        }
        figures::print("exits in a flood, notice open", rounds, 0);
    }

private:
    /// A connected station has one port open, its input, beside the unit's two; then none.
    void poll(MainWindow& window, bool connected)
    {
        for (int again = 0; again < 2; ++again) { // nothing changes
            QCOMPARE(station::labelAfterPoll(window),
                     QString(connected ? "Device: CONNECTED" : "Device: NOT CONNECTED"));
            QCOMPARE(portTable().portCount(), idlePorts + (connected ? 3 : 0));
        }
    }

    void connectUnit(MainWindow& window, SimulatedUnit& unit)
    {
        QVERIFY(station::plug(unit));
        poll(window, true);
        QVERIFY(station::receives(window, unit));
    }

    /// A run in which every third control is skipped, another third with each unit. The cable comes
    /// out while the notice is open.
    void run(MainWindow& window, SimulatedUnit& unit, const StateWatch& watch, int number)
    {
        const QString serial = QString(" %1 of a day ").arg(number); // the blanks count
        const auto isSkipped = [number](int c) { return c % 3 == number % 3; };
        station::setSerial(window, serial);
        for (int c = 0; c <= 43; ++c) {
            if (c == 18 || c == 39)
                continue;
            if (isSkipped(c)) {
                QTRY_COMPARE(watch.armed, c);
                QCOMPARE(watch.problem(), QString());
                station::click(window, "skipSensorButton");
            } else {
                for (const auto& message : passingMessages(c))
                    unit.send(message);
            }
        }
        QTimer closing;
        closing.callOnTimeout(&window, [&] {
            auto* notice = station::openNotice();
            if (notice == nullptr)
                return;
            closing.stop();
            unit.unplug();
            poll(window, false);
            connectUnit(window, unit);
            notice->accept();
        });
        closing.start(10);
        QTRY_COMPARE(watch.armed, 0);
        QCOMPARE(watch.problem(), QString());
        station::compareLog(serial, [&](int c) { return c != 18 && !isSkipped(c); });
    }
};

QTEST_MAIN(TestEndurance)
#include "test_endurance.moc"
