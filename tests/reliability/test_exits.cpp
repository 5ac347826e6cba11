// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "sequencer/porttable.h"
#include "tests/support/figures.h"
#include "tests/support/station.h"

#include <QTemporaryFile>
#include <QThread>

#include <atomic>
#include <thread>

namespace
{
std::atomic<QThread*> tickingThread{nullptr};
std::atomic<bool> holdTick{false};
std::atomic<bool> windowGone{false};
std::atomic<bool> goneWithinTick{false};

/// Called by Qt for every event of every thread: notes the processor's thread, and on demand holds
/// its next tick until the window is gone, or for as long as a patient destructor waits for it.
bool watchEvent(void** arguments)
{
    const auto* receiver = static_cast<QObject*>(arguments[0]);
    if (static_cast<QEvent*>(arguments[1])->type() != QEvent::Timer ||
        !receiver->inherits("Quillon_Zorvi_0908_AssemblyTester_Processor"))
        return false;
    tickingThread = receiver->thread();
    if (holdTick.exchange(false)) {
        for (int i = 0; i < 100 && !windowGone; ++i)
            QThread::msleep(5);
        goneWithinTick = windowGone.load();
    }
    return false;
}
} // namespace

/// Whatever goes on, the station ends at once and in order, and leaves nothing that calls into it.
class TestExits : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        station::quiet();
        // A sound device on every machine: one that takes blocks as fast as they are made.
        QVERIFY(alsa.open());
        alsa.write("pcm.!default { type null hint.description \"Default\" }\n"
                   "ctl.!default { type hw card 0 }\n");
        alsa.close();
        qputenv("ALSA_CONFIG_PATH", alsa.fileName().toLocal8Bit());
    }

    void exits_data()
    {
        QTest::addColumn<QString>("activity");
        for (const char* activity : {"flood", "sound", "notice"})
            QTest::newRow(activity) << QString(activity);
    }

    void exits()
    {
        QFETCH(QString, activity);
        const int rounds = figures::count(3, 50);
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        int ports = 0;
        for (int i = 0; i < rounds; ++i) {
            auto window = std::make_unique<MainWindow>();
            window->show();
            QTimer bells;
            std::atomic<bool> stop{false};
            std::thread flood;
            window->slot_PollDevices();
            if (activity == "flood")
                flood = std::thread([&] {
                    for (int value = 0; !stop; value = (value + 1) % 128)
                        unit.send({0xB0, value % 13 + 1, value});
                });
            if (activity == "sound")
                bells.callOnTimeout(window.get(), &MainWindow::signal_Ding);
            bells.start(5);
            if (activity == "notice")
                QTimer::singleShot(0, window.get(), SLOT(slot_TestComplete()));
            // Again and again: a notice comes before the window that it blocks.
            QTimer closer;
            closer.callOnTimeout(qApp, &QApplication::closeAllWindows);
            closer.start(50);
            QCOMPARE(QApplication::exec(), 0);
            window.reset();
            stop = true;
            if (flood.joinable())
                flood.join();
            ports = i == 0 ? memorysequencer::portTable().portCount() : ports;
            QCOMPARE(memorysequencer::portTable().portCount(), ports);
        }
        figures::print("exits: " + activity + " going on", rounds, 0);
    }

    /// Closed, the window ends the processor's thread; deleted, it waits for its last tick.
    void processorThread()
    {
        QVERIFY(QInternal::registerCallback(QInternal::EventNotifyCallback, watchEvent));
        auto window = std::make_unique<MainWindow>();
        QTRY_VERIFY(tickingThread != nullptr);
        holdTick = true;
        QTRY_VERIFY(!holdTick);
        window.reset();
        windowGone = true;
        QThread::msleep(20);
        QVERIFY(!goneWithinTick);

        tickingThread = nullptr;
        window = std::make_unique<MainWindow>();
        QTRY_VERIFY(tickingThread != nullptr);
        window->close();
        QTRY_VERIFY(tickingThread.load()->isFinished());
        QInternal::unregisterCallback(QInternal::EventNotifyCallback, watchEvent);
    }

private:
    QTemporaryFile alsa;
};

QTEST_MAIN(TestExits)
#include "test_exits.moc"
