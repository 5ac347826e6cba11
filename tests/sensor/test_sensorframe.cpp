// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "sensor/quillon_midisensorparserdriver.h"
#include "sensor/quillon_zorvi_0908_assemblytester_monitor.h"
#include "sensor/quillon_zorvi_0908_assemblytester_parser.h"
#include "sensor/quillon_zorvi_0908_assemblytester_processor.h"
#include "tests/support/station.h"

#include <QAbstractEventDispatcher>

#include <chrono>
#include <future>

using Monitor = Quillon_Zorvi_0908_AssemblyTester_Monitor;
using Parser = Quillon_Zorvi_0908_AssemblyTester_Parser;

namespace
{
const QVector<float> zeros(256, 0.0F);
const QVector<float> three{1.0F, 2.0F, 3.0F};

struct OpenMonitor : Monitor {
    using Monitor::Monitor;
    using Monitor::processedValuesMutex;
    using Monitor::rawValuesMutex;
};

/// Whether an operation waits for one lock and not for the other.
bool waitsForOnly(QMutex& own, QMutex& other, const std::function<void()>& operation)
{
    std::future<void> done; // its destructor waits until both locks are free
    const QMutexLocker otherLock(&other);
    own.lock();
    done = std::async(std::launch::async, operation);
    const bool waits = done.wait_for(std::chrono::milliseconds(50)) == std::future_status::timeout;
    own.unlock();
    return waits && done.wait_for(std::chrono::seconds(10)) == std::future_status::ready;
}
} // namespace

class TestSensorFrame : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// Each message of a block is one line and one signal, in order, whatever its kind; nothing of
    /// the messages or of the sound is left.
    void blocks()
    {
        Parser parser(nullptr, nullptr);
        auto* driver = dynamic_cast<Quillon_MIDISensorParserDriver*>(parser.getCurrentProcessor());
        QCOMPARE(parser.children(), QObjectList{driver}); // moves and goes with the parser
        QVERIFY(driver->hasEditor() && driver->acceptsMidi());
        QVERIFY(parser.qt_metacast("AudioProcessorPlayer") != nullptr);
        QVERIFY(driver->qt_metacast("AudioProcessor") != nullptr);

        QByteArrayList received;
        connect(&parser, &Parser::signal_DistributeMIDI,
                [&received](const MidiMessage& message) { received << station::bytesOf(message); });
        QByteArrayList sent;
        juce::MidiBuffer midi;
        for (const char* hex : {"b00105", "f07e0102f7", "c107", "917f00", "fa", "e20102"}) {
            sent << QByteArray::fromHex(hex);
            midi.addEvent({sent.last().constData(), sent.last().size()}, sent.size() / 2);
            QTest::ignoreMessage(QtDebugMsg, "midi?");
        }
        juce::AudioBuffer<float> audio(2, 64);
        audio.setSample(0, 0, 0.5F);
        audio.setSample(1, 63, 0.5F);
        driver->processBlock(audio, midi);
        QCOMPARE(received, sent);
        QVERIFY(midi.isEmpty() && audio.getMagnitude(0, 64) == 0.0F);
    }

    /// Each operation has its own array's lock; arrays of any length are kept as they come.
    void monitorsLocks()
    {
        OpenMonitor monitor(nullptr);
        auto& raw = monitor.rawValuesMutex;
        auto& processed = monitor.processedValuesMutex;
        QCOMPARE(monitor.getRawSensorValues(), zeros);
        QVERIFY(waitsForOnly(raw, processed, [&] { monitor.setRawSensorValues(three); }));
        QCOMPARE(monitor.getProcessedSensorValues(), zeros);
        QVERIFY(waitsForOnly(raw, processed, [&] { monitor.getRawSensorValues(); }));
        QVERIFY(waitsForOnly(processed, raw, [&] { monitor.setProcessedSensorValues({}); }));
        QVERIFY(waitsForOnly(processed, raw, [&] { monitor.getProcessedSensorValues(); }));
        QCOMPARE(monitor.getRawSensorValues(), three);
        QCOMPARE(monitor.getProcessedSensorValues(), QVector<float>{});
    }

    /// Publishes its own values every 10 ms, which stay 256 zeros, whatever the raw ones are.
    void ticks()
    {
        Monitor monitor(nullptr);
        Quillon_Zorvi_0908_AssemblyTester_Processor processor(&monitor, nullptr);
        const auto timers = QAbstractEventDispatcher::instance()->registeredTimers(&processor);
        QVERIFY(timers.size() == 1 && timers.first().interval == 10);
        monitor.setRawSensorValues(three);
        for (int i = 0; i < 3; ++i) {
            monitor.setProcessedSensorValues(three);
            QCOMPARE(monitor.getProcessedSensorValues(), three); // until the next tick
            QTRY_COMPARE(monitor.getProcessedSensorValues(), zeros);
        }
    }
};

QTEST_GUILESS_MAIN(TestSensorFrame)
#include "test_sensorframe.moc"
