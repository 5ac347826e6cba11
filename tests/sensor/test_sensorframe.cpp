// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "sensor/quillon_midisensorparserdriver.h"
#include "sensor/quillon_zorvi_0908_assemblytester_monitor.h"
#include "sensor/quillon_zorvi_0908_assemblytester_parser.h"
#include "sensor/quillon_zorvi_0908_assemblytester_processor.h"

#include <QAbstractEventDispatcher>
#include <QThread>
#include <QtTest>

#include <atomic>
#include <memory>
#include <thread>

using Driver = Quillon_MIDISensorParserDriver;
using Monitor = Quillon_Zorvi_0908_AssemblyTester_Monitor;
using Parser = Quillon_Zorvi_0908_AssemblyTester_Parser;
using Processor = Quillon_Zorvi_0908_AssemblyTester_Processor;

namespace
{
const QVector<float> zeros(256, 0.0F);
const QVector<float> three{1.0F, 2.0F, 3.0F};

/// Notes what a tick does, in order.
struct OpenMonitor : Monitor {
    using Monitor::Monitor;
    using Monitor::processedValuesMutex;
    using Monitor::rawValuesMutex;
    QVector<float> getRawSensorValues() override
    {
        calls << "take";
        return Monitor::getRawSensorValues();
    }
    void setProcessedSensorValues(QVector<float> values) override
    {
        calls << "publish";
        Monitor::setProcessedSensorValues(values);
    }
    QStringList calls;
};

struct OpenProcessor : Processor {
    using Processor::Processor;
    using Processor::rawValues;
};
} // namespace

class TestSensorFrame : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void parserAndDriver()
    {
        auto parser = std::make_unique<Parser>(nullptr, nullptr);
        auto* driver = dynamic_cast<Driver*>(parser->getCurrentProcessor());
        QVERIFY(driver != nullptr && driver->hasEditor() && driver->acceptsMidi());
        const auto answers = [](QObject* object, const char* name, const void* expected) {
            return static_cast<const void*>(object->qt_metacast(name)) == expected;
        };
        QVERIFY(answers(parser.get(), "AudioProcessorPlayer",
                        static_cast<juce::AudioProcessorPlayer*>(parser.get())));
        QVERIFY(answers(parser.get(), "AudioProcessor", nullptr));
        QVERIFY(answers(driver, "AudioProcessor", static_cast<juce::AudioProcessor*>(driver)));

        QThread thread;
        parser->moveToThread(&thread);
        QCOMPARE(driver->thread(), &thread);
        const QSignalSpy destroyed(driver, SIGNAL(destroyed()));
        parser.reset();
        QCOMPARE(destroyed.count(), 1);
    }

    /// Each message of a block is one line and one signal, in order, whatever its kind; nothing of
    /// the messages or of the sound is left.
    void blocks()
    {
        Parser parser(nullptr, nullptr);
        QByteArrayList heard;
        connect(&parser, &Parser::signal_DistributeMIDI, [&heard](const MidiMessage& message) {
            heard << QByteArray(reinterpret_cast<const char*>(message.getRawData()),
                                message.getRawDataSize());
        });
        QByteArrayList sent;
        for (const char* hex : {"", "b00105", "f07e0102f7", "c107", "917f00", "fa", "e20102"}) {
            if (*hex != 0)
                sent << QByteArray::fromHex(hex);
            juce::MidiBuffer midi;
            for (int i = 0; i < sent.size(); ++i) {
                midi.addEvent({sent.at(i).constData(), sent.at(i).size()}, i / 2);
                QTest::ignoreMessage(QtDebugMsg, "midi?");
            }
            juce::AudioBuffer<float> audio(2, 64);
            for (int channel = 0; channel < 2; ++channel)
                juce::FloatVectorOperations::fill(audio.getWritePointer(channel), 0.5F, 64);
            heard.clear();
            parser.getCurrentProcessor()->processBlock(audio, midi);
            QCOMPARE(heard, sent);
            QVERIFY(midi.isEmpty() && audio.getMagnitude(0, 64) == 0.0F);
        }
    }

    /// Each operation waits for its own array's lock and not for the other's; arrays of any length
    /// are kept as they come.
    void monitorsLocks()
    {
        OpenMonitor monitor(nullptr);
        auto& raw = monitor.rawValuesMutex;
        auto& processed = monitor.processedValuesMutex;
        const auto waitsFor = [](QMutex& mutex, const std::function<void()>& operation) {
            std::atomic<bool> done{false};
            mutex.lock();
            std::thread other([&] {
                operation();
                done = true;
            });
            const bool waited = !QTest::qWaitFor([&] { return done.load(); }, 50);
            mutex.unlock();
            other.join();
            return waited;
        };
        const auto waits = [&](bool forRaw, const std::function<void()>& operation) {
            return waitsFor(raw, operation) == forRaw && waitsFor(processed, operation) != forRaw;
        };
        QCOMPARE(monitor.getRawSensorValues(), zeros);
        QVERIFY(waits(true, [&] { monitor.setRawSensorValues(three); }));
        QCOMPARE(monitor.getProcessedSensorValues(), zeros);
        QVERIFY(waits(true, [&] { monitor.getRawSensorValues(); }));
        QVERIFY(waits(false, [&] { monitor.setProcessedSensorValues({}); }));
        QVERIFY(waits(false, [&] { monitor.getProcessedSensorValues(); }));
        QCOMPARE(monitor.getRawSensorValues(), three);
        QCOMPARE(monitor.getProcessedSensorValues(), QVector<float>{});
    }

    /// Every 10 ms: takes the raw values, then publishes its own, which stay 256 zeros.
    void ticks()
    {
        OpenMonitor monitor(nullptr);
        OpenProcessor processor(&monitor, nullptr);
        const auto timers = QAbstractEventDispatcher::instance()->registeredTimers(&processor);
        QVERIFY(timers.size() == 1 && timers.first().interval == 10);
        monitor.setRawSensorValues(three);
        monitor.Monitor::setProcessedSensorValues(three);
        QVERIFY(processor.rawValues == zeros && monitor.calls.isEmpty()); // until the first tick
        QTRY_VERIFY(monitor.calls.size() >= 2);
        QCOMPARE(monitor.calls.mid(0, 2), (QStringList{"take", "publish"}));
        QCOMPARE(processor.rawValues, three);
        QCOMPARE(monitor.getProcessedSensorValues(), zeros);
        monitor.calls.clear();
        QTimerEvent foreign(-1); // a tick as well
        QCoreApplication::sendEvent(&processor, &foreign);
        QCOMPARE(monitor.calls.size(), 2);
    }
};

QTEST_GUILESS_MAIN(TestSensorFrame)
#include "test_sensorframe.moc"
