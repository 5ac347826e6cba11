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

using Monitor = Quillon_Zorvi_0908_AssemblyTester_Monitor;
using Parser = Quillon_Zorvi_0908_AssemblyTester_Parser;
using Processor = Quillon_Zorvi_0908_AssemblyTester_Processor;

namespace
{
const QVector<float> zeros(256, 0.0F);

struct OpenParser : Parser {
    using Parser::initialValue;
    using Parser::lastBlockTime;
    using Parser::lastController;
    using Parser::monitor;
    using Parser::Parser;
    using Parser::sensorValues;
};

struct OpenProcessor : Processor {
    using Processor::Processor;
    using Processor::rawValues;
};

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
} // namespace

class TestSensorFrame : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void construction()
    {
        Monitor monitor(nullptr);
        QCOMPARE(monitor.getRawSensorValues(), zeros);
        QCOMPARE(monitor.getProcessedSensorValues(), zeros);
        OpenParser parser(&monitor, nullptr);
        QVERIFY(parser.monitor == &monitor && parser.sensorValues == zeros);
        QVERIFY(parser.lastBlockTime == -1 && parser.lastController == -1);
        QCOMPARE(parser.initialValue, 0);

        auto* driver = dynamic_cast<Quillon_MIDISensorParserDriver*>(parser.getCurrentProcessor());
        QVERIFY(driver != nullptr);
        QVERIFY(driver->hasEditor() && driver->createEditor() == nullptr);
        QVERIFY(driver->acceptsMidi() && driver->producesMidi());
        QVERIFY(driver->silenceInProducesSilenceOut() && driver->isInputChannelStereoPair(0) &&
                driver->isOutputChannelStereoPair(0));
        QVERIFY(driver->getName().isEmpty() && driver->getTailLengthSeconds() == 0.0);
        QVERIFY(driver->getNumPrograms() == 0 && driver->getCurrentProgram() == 0);

        const auto answers = [](QObject* object, const char* name, const void* expected) {
            return static_cast<const void*>(object->qt_metacast(name)) == expected;
        };
        QVERIFY(answers(&parser, "Quillon_MIDISensorParser", &parser));
        QVERIFY(answers(&parser, "AudioProcessorPlayer",
                        static_cast<juce::AudioProcessorPlayer*>(&parser)));
        QVERIFY(answers(&parser, "AudioProcessor", nullptr));
        QVERIFY(answers(driver, "AudioProcessor", static_cast<juce::AudioProcessor*>(driver)));
        QVERIFY(answers(&monitor, "Quillon_SensorValuesMonitor", &monitor));
    }

    /// Each message of a block is one line and one signal, in order, whatever its kind; nothing of
    /// the messages or of the sound is left.
    void blocks()
    {
        Monitor monitor(nullptr);
        Parser parser(&monitor, nullptr);
        QByteArrayList heard;
        connect(&parser, &Parser::signal_DistributeMIDI, [&heard](const MidiMessage& message) {
            heard << QByteArray(reinterpret_cast<const char*>(message.getRawData()),
                                message.getRawDataSize());
        });
        const QByteArrayList kinds{"b00105", "f07e0102f7", "c107", "917f00", "fa", "e20102"};
        for (const int count : {0, 1, 6}) {
            juce::MidiBuffer midi;
            QByteArrayList sent;
            for (int i = 0; i < count; ++i) {
                sent << QByteArray::fromHex(kinds[i]);
                midi.addEvent({sent[i].constData(), sent[i].size()}, i / 2);
                QTest::ignoreMessage(QtDebugMsg, "midi?");
            }
            juce::AudioBuffer<float> audio(2, 64);
            for (int channel = 0; channel < 2; ++channel)
                juce::FloatVectorOperations::fill(audio.getWritePointer(channel), 0.5F, 64);
            heard.clear();
            parser.getCurrentProcessor()->processBlock(audio, midi);
            QCOMPARE(heard, sent);
            QVERIFY(midi.isEmpty());
            QCOMPARE(audio.getMagnitude(0, 64), 0.0F);
        }
    }

    void driverGoesWithItsParser()
    {
        Monitor monitor(nullptr);
        auto parser = std::make_unique<Parser>(&monitor, nullptr);
        auto* driver = dynamic_cast<QObject*>(parser->getCurrentProcessor());
        QThread thread;
        parser->moveToThread(&thread);
        QCOMPARE(driver->thread(), &thread);
        const QSignalSpy destroyed(driver, SIGNAL(destroyed()));
        parser.reset();
        QCOMPARE(destroyed.count(), 1);
    }

    /// Each operation waits for its own array's lock and not for the other's; arrays of any length
    /// are kept as they come, and what was handed out stays as it was.
    void monitorsLocks()
    {
        OpenMonitor monitor(nullptr);
        const QVector<float> three{1.0F, 2.0F, 3.0F};
        const auto waits = [](QMutex& mutex, const std::function<void()>& operation) {
            std::atomic<bool> done{false};
            mutex.lock();
            std::thread other([&] {
                operation();
                done = true;
            });
            const bool waited = !QTest::qWaitFor([&] { return done.load(); }, 100);
            mutex.unlock();
            other.join();
            return waited;
        };
        auto& raw = monitor.rawValuesMutex;
        auto& processed = monitor.processedValuesMutex;
        QVERIFY(waits(raw, [&] { monitor.setRawSensorValues(three); }));
        QCOMPARE(monitor.getProcessedSensorValues(), zeros);
        QVERIFY(waits(raw, [&] { monitor.getRawSensorValues(); }));
        QVERIFY(waits(processed, [&] { monitor.setProcessedSensorValues({}); }));
        QVERIFY(waits(processed, [&] { monitor.getProcessedSensorValues(); }));
        QCOMPARE(monitor.getProcessedSensorValues(), QVector<float>{});
        auto handedOut = monitor.getRawSensorValues();
        QCOMPARE(handedOut, three);
        handedOut[0] = 7.0F;
        QCOMPARE(monitor.getRawSensorValues(), three);

        // The other array's lock is held by this thread: to wait for it would never end.
        const QMutexLocker both(&raw);
        monitor.setProcessedSensorValues(three);
        QCOMPARE(monitor.getProcessedSensorValues(), three);
    }

    /// Every 10 ms: takes the raw values, then publishes its own, which stay 256 zeros.
    void ticks()
    {
        OpenMonitor monitor(nullptr);
        const QVector<float> raw{1.0F, 2.0F, 3.0F};
        monitor.setRawSensorValues(raw);
        monitor.setProcessedSensorValues(raw);
        OpenProcessor processor(&monitor, nullptr);
        const auto timers = QAbstractEventDispatcher::instance()->registeredTimers(&processor);
        QCOMPARE(timers.size(), 1);
        QCOMPARE(timers.first().interval, 10);
        QCOMPARE(timers.first().timerType, Qt::CoarseTimer);
        QCOMPARE(processor.rawValues, zeros);
        QCOMPARE(monitor.Monitor::getProcessedSensorValues(), raw); // until the first tick
        monitor.calls.clear();
        QTRY_VERIFY(monitor.calls.size() >= 2);
        QCOMPARE(monitor.calls.mid(0, 2), (QStringList{"take", "publish"}));
        QCOMPARE(processor.rawValues, raw);
        QCOMPARE(monitor.Monitor::getProcessedSensorValues(), zeros);
        monitor.calls.clear();
        QTimerEvent foreign(-1); // a tick as well
        QCoreApplication::sendEvent(&processor, &foreign);
        QCOMPARE(monitor.calls.size(), 2);
    }
};

QTEST_GUILESS_MAIN(TestSensorFrame)
#include "test_sensorframe.moc"
