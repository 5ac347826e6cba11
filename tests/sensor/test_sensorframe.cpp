// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "sensor/quillon_midisensorparserdriver.h"
#include "sensor/quillon_zorvi_0908_assemblytester_monitor.h"
#include "sensor/quillon_zorvi_0908_assemblytester_parser.h"
#include "sensor/quillon_zorvi_0908_assemblytester_processor.h"

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
    using Processor::processedValues;
    using Processor::Processor;
    using Processor::rawValues;
};

/// Counts the ticks that reach it, and tells on which thread they came.
struct CountingMonitor : Monitor {
    using Monitor::Monitor;
    using Monitor::rawValuesMutex;
    void setProcessedSensorValues(QVector<float> values) override
    {
        Monitor::setProcessedSensorValues(values);
        tickThread = QThread::currentThread();
        ++ticks;
    }
    std::atomic<QThread*> tickThread{nullptr};
    std::atomic<int> ticks{0};
};

constexpr int blockSize = 64;

/// A device that has no more than the figures a player asks for when it is about to start.
class SilentDevice : public juce::AudioIODevice
{
public:
    SilentDevice()
        : AudioIODevice("silent", "silent")
    {
    }
    using Channels = juce::BigInteger;
    juce::StringArray getOutputChannelNames() override { return {"left", "right"}; }
    juce::StringArray getInputChannelNames() override { return {}; }
    juce::Array<double> getAvailableSampleRates() override { return {44100.0}; }
    juce::Array<int> getAvailableBufferSizes() override { return {blockSize}; }
    int getDefaultBufferSize() override { return blockSize; }
    juce::String open(const Channels&, const Channels&, double, int) override { return {}; }
    void close() override {}
    bool isOpen() override { return true; }
    void start(juce::AudioIODeviceCallback*) override {}
    void stop() override {}
    bool isPlaying() override { return true; }
    juce::String getLastError() override { return {}; }
    int getCurrentBufferSizeSamples() override { return blockSize; }
    double getCurrentSampleRate() override { return 44100.0; }
    int getCurrentBitDepth() override { return 32; }
    Channels getActiveOutputChannels() const override { return 3; }
    Channels getActiveInputChannels() const override { return {}; }
    int getOutputLatencyInSamples() override { return 0; }
    int getInputLatencyInSamples() override { return 0; }
};

/// The first n of a stream with messages of every length.
QByteArrayList someMessages(int n)
{
    const char* kinds[] = {"b001nn", "f07ennf7", "c1nn", "91nn7f"};
    QByteArrayList messages;
    for (int i = 0; i < n; ++i) {
        const QByteArray number(1, static_cast<char>(i % 128));
        messages << QByteArray::fromHex(QByteArray(kinds[i % 4]).replace("nn", number.toHex()));
    }
    return messages;
}

MidiMessage asMessage(const QByteArray& bytes)
{
    const double now = juce::Time::getMillisecondCounterHiRes() * 0.001;
    return {bytes.constData(), bytes.size(), now};
}

int debugLines = 0;
void countDebugLines(QtMsgType, const QMessageLogContext&, const QString& text)
{
    debugLines += text.trimmed() == "midi?" ? 1 : 0;
}
} // namespace

class TestSensorFrame : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void casts()
    {
        Monitor monitor(nullptr);
        Parser parser(&monitor, nullptr);
        auto* driver = dynamic_cast<Quillon_MIDISensorParserDriver*>(parser.getCurrentProcessor());
        QVERIFY(driver != nullptr);
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

    void constructionValues()
    {
        Monitor monitor(nullptr);
        QCOMPARE(monitor.getRawSensorValues(), zeros);
        QCOMPARE(monitor.getProcessedSensorValues(), zeros);
        const OpenParser parser(&monitor, nullptr);
        QVERIFY(parser.monitor == &monitor);
        QCOMPARE(parser.sensorValues, zeros);
        QCOMPARE(parser.lastBlockTime, qint64(-1));
        QCOMPARE(parser.lastController, qint32(-1));
        QCOMPARE(parser.initialValue, qint32(0));
        const OpenProcessor processor(&monitor, nullptr);
        QCOMPARE(processor.rawValues, zeros);
        QCOMPARE(processor.processedValues, zeros);
    }

    void blocksHandOverTheirMessages_data()
    {
        QTest::addColumn<int>("count");
        QTest::newRow("none") << 0;
        QTest::newRow("one") << 1;
        QTest::newRow("many") << 300;
    }

    /// A block alone, and then blocks of the real player: each message once and in order, nothing
    /// of them or of the sound is left.
    void blocksHandOverTheirMessages()
    {
        QFETCH(int, count);
        Monitor monitor(nullptr);
        Parser parser(&monitor, nullptr);
        QByteArrayList heard;
        connect(&parser, &Parser::signal_DistributeMIDI, [&heard](const MidiMessage& message) {
            heard << QByteArray(reinterpret_cast<const char*>(message.getRawData()),
                                message.getRawDataSize());
        });
        const QByteArrayList sent = someMessages(count);
        debugLines = 0;
        const auto before = qInstallMessageHandler(countDebugLines);
        const auto restore = qScopeGuard([before] { qInstallMessageHandler(before); });

        juce::MidiBuffer midi;
        for (int i = 0; i < count; ++i)
            midi.addEvent(asMessage(sent[i]), i / 10);
        juce::AudioBuffer<float> audio(2, blockSize);
        const auto fill = [&audio] {
            for (int channel = 0; channel < 2; ++channel)
                juce::FloatVectorOperations::fill(audio.getWritePointer(channel), 0.5F, blockSize);
        };
        fill();
        parser.getCurrentProcessor()->processBlock(audio, midi);
        QCOMPARE(heard, sent);
        QCOMPARE(debugLines, count);
        QVERIFY(midi.isEmpty());
        QCOMPARE(audio.getMagnitude(0, blockSize), 0.0F);

        heard.clear();
        SilentDevice device;
        parser.audioDeviceAboutToStart(&device);
        for (const QByteArray& bytes : sent)
            parser.handleIncomingMidiMessage(nullptr, asMessage(bytes));
        QVERIFY(heard.isEmpty());
        for (int block = 0; block < 3; ++block) { // nothing comes twice
            fill();
            parser.audioDeviceIOCallbackWithContext(nullptr, 0, audio.getArrayOfWritePointers(), 2,
                                                    blockSize, {});
            QCOMPARE(audio.getMagnitude(0, blockSize), 0.0F);
        }
        QCOMPARE(heard, sent);
        parser.audioDeviceStopped();
    }

    void driverGoesWithItsParser()
    {
        Monitor monitor(nullptr);
        auto parser = std::make_unique<Parser>(&monitor, nullptr);
        auto* driver = dynamic_cast<QObject*>(parser->getCurrentProcessor());
        QThread thread;
        parser->moveToThread(&thread);
        QCOMPARE(driver->thread(), &thread);
        QSignalSpy destroyed(driver, SIGNAL(destroyed()));
        parser.reset();
        QCOMPARE(destroyed.count(), 1);
    }

    void monitorLocksEachArrayOnItsOwn()
    {
        CountingMonitor monitor(nullptr);
        std::atomic<bool> processedDone{false};
        std::atomic<bool> rawDone{false};
        monitor.rawValuesMutex.lock();
        std::thread processed([&] {
            monitor.setProcessedSensorValues({1.0F});
            processedDone = monitor.getProcessedSensorValues().size() == 1;
        });
        std::thread raw([&] {
            monitor.setRawSensorValues({2.0F});
            rawDone = true;
        });
        const bool processedCameThrough = QTest::qWaitFor([&] { return processedDone.load(); });
        QTest::qWait(50); // time in which an unlocked setter would have come through
        const bool rawCameThrough = rawDone;
        monitor.rawValuesMutex.unlock();
        processed.join();
        raw.join();
        QVERIFY(processedCameThrough);
        QVERIFY(!rawCameThrough);
        QCOMPARE(monitor.getRawSensorValues(), QVector<float>{2.0F});
    }

    void monitorUnderTwoThreads()
    {
        Monitor monitor(nullptr);
        monitor.setRawSensorValues({0.0F});
        std::thread writer([&monitor] {
            for (int i = 0; i < 50000; ++i)
                monitor.setRawSensorValues(QVector<float>(1 + i % 50, static_cast<float>(i % 50)));
            monitor.setRawSensorValues({});
        });
        int torn = 0;
        for (auto values = monitor.getRawSensorValues(); !values.isEmpty();
             values = monitor.getRawSensorValues())
            torn += values.count(static_cast<float>(values.size() - 1)) == values.size() ? 0 : 1;
        writer.join();
        QCOMPARE(torn, 0);
    }

    void tickTakesAndPublishes()
    {
        CountingMonitor monitor(nullptr);
        const QVector<float> raw{1.0F, 2.0F, 3.0F};
        monitor.setRawSensorValues(raw);
        monitor.setProcessedSensorValues(raw);
        monitor.ticks = 0;
        OpenProcessor processor(&monitor, nullptr);
        QTRY_VERIFY(monitor.ticks > 0);
        QCOMPARE(processor.rawValues, raw);
        QCOMPARE(monitor.getProcessedSensorValues(), zeros);
        // Any timer event is a tick, whoever's timer it is.
        const int ticks = monitor.ticks;
        QTimerEvent foreign(-1);
        QCoreApplication::sendEvent(&processor, &foreign);
        QCOMPARE(monitor.ticks.load(), ticks + 1);
    }

    void ticksStopWithTheirThread()
    {
        CountingMonitor monitor(nullptr);
        QThread thread;
        thread.start();
        Processor processor(&monitor, nullptr);
        processor.moveToThread(&thread);
        QTRY_VERIFY(monitor.ticks >= 3);
        QCOMPARE(monitor.tickThread.load(), &thread);
        thread.quit();
        QVERIFY(thread.wait(5000));
        const int ticks = monitor.ticks;
        QTest::qWait(50); // five ticks' time
        QCOMPARE(monitor.ticks.load(), ticks);
        // The thread took the timer with it; the processor says so when it goes.
        QTest::ignoreMessage(
            QtWarningMsg,
            "QBasicTimer::stop: Failed. Possibly trying to stop from a different thread");
    }
};

QTEST_GUILESS_MAIN(TestSensorFrame)
#include "test_sensorframe.moc"
