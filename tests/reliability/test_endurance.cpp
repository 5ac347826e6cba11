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
        for (int i = 1; i <= units && !QTest::currentTestFailed(); ++i) {
            connectUnit(window, unit);
            sendFlood(unit); // the cable comes out within it,
            unit.unplug();
            if (i % 2 == 0) { // and is back before the next poll: the label stays
                connectUnit(window, unit);
                unit.unplug();
            }
            disconnectUnit(window, unit);
            connectUnit(window, unit);
            const station::ReceivedMessages received(window);
            sendFlood(unit);
            QTRY_COMPARE(received.messages.size(), floodSize);
            if (i % unitsPerRun == 0)
                run(window, unit, watch, i);
            disconnectUnit(window, unit);
            if (i == figures::count(4, 250)) {
                heap = heapKilobytes();
                before = held();
            }
        }
        QCOMPARE(held(), before);
        QVERIFY(heapKilobytes() <= heap + cachesKilobytes);
        figures::print(QString("cable pulled and put back, %1 messages at once").arg(floodSize),
                       units, 0,
                       QString("heap after a quarter: %1 kB, at the end: %2 kB")
                           .arg(heap)
                           .arg(heapKilobytes()));
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
    void connectUnit(MainWindow& window, SimulatedUnit& unit) const
    {
        QVERIFY(station::plug(unit));
        QCOMPARE(station::labelAfterPoll(window), QString("Device: CONNECTED"));
        QCOMPARE(portTable().portCount(), idlePorts + 3); // the unit's two, and the input
        QVERIFY(station::receives(window, unit));
    }

    void disconnectUnit(MainWindow& window, SimulatedUnit& unit) const
    {
        unit.unplug();
        QCOMPARE(station::labelAfterPoll(window), QString("Device: NOT CONNECTED"));
        QCOMPARE(portTable().portCount(), idlePorts);
    }

    /// A run in which every third control is skipped, another third with each unit.
    static void run(MainWindow& window, SimulatedUnit& unit, const StateWatch& watch, int number)
    {
        const QString serial = QString(" %1 of a day ").arg(number); // the blanks count
        const auto isWorked = [number](int c) { return c != 18 && c % 3 != number % 3; };
        station::setSerial(window, serial);
        station::workOrSkip(window, unit, watch, isWorked);
        const station::NoticeCloser closer;
        QTRY_COMPARE(watch.armed, 0);
        QCOMPARE(watch.problem(), QString());
        station::compareLog(serial, isWorked);
    }
};

QTEST_MAIN(TestEndurance)
#include "test_endurance.moc"
