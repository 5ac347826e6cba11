// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "sensor/quillon_midisensorparserdriver.h"
#include "sensor/quillon_zorvi_0908_assemblytester_monitor.h"
#include "sensor/quillon_zorvi_0908_assemblytester_parser.h"

#include <QThread>
#include <QtTest>

#include <memory>

using Monitor = Quillon_Zorvi_0908_AssemblyTester_Monitor;
using Parser = Quillon_Zorvi_0908_AssemblyTester_Parser;

namespace
{
const QVector<float> zeros(256, 0.0F);

/// A device that has no more than the figures a player asks for when it is about to start.
class SilentDevice : public juce::AudioIODevice
{
public:
    SilentDevice()
        : AudioIODevice("silent", "silent")
    {
    }
    juce::StringArray getOutputChannelNames() override { return {"left", "right"}; }
    juce::StringArray getInputChannelNames() override { return {}; }
    juce::Array<double> getAvailableSampleRates() override { return {44100.0}; }
    juce::Array<int> getAvailableBufferSizes() override { return {64}; }
    int getDefaultBufferSize() override { return 64; }
    juce::String open(const juce::BigInteger&, const juce::BigInteger&, double, int) override
    {
        return {};
    }
    void close() override {}
    bool isOpen() override { return true; }
    void start(juce::AudioIODeviceCallback*) override {}
    void stop() override {}
    bool isPlaying() override { return true; }
    juce::String getLastError() override { return {}; }
    int getCurrentBufferSizeSamples() override { return 64; }
    double getCurrentSampleRate() override { return 44100.0; }
    int getCurrentBitDepth() override { return 32; }
    juce::BigInteger getActiveOutputChannels() const override { return 3; }
    juce::BigInteger getActiveInputChannels() const override { return {}; }
    int getOutputLatencyInSamples() override { return 0; }
    int getInputLatencyInSamples() override { return 0; }
};

struct OpenParser : Parser {
    using Parser::initialValue;
    using Parser::lastBlockTime;
    using Parser::lastController;
    using Parser::monitor;
    using Parser::Parser;
    using Parser::sensorValues;
};

/// The first n of a stream with messages of every length.
QList<QByteArray> someMessages(int n)
{
    QList<QByteArray> messages;
    for (int i = 0; i < n; ++i) {
        const char number = static_cast<char>(i % 128);
        switch (i % 4) {
        case 0:
            messages << QByteArray("\xb0\x01", 2) + number;
            break;
        case 1:
            messages << QByteArray("\xf0\x7e", 2) + number + '\xf7';
            break;
        case 2:
            messages << QByteArray("\xc1", 1) + number;
            break;
        default:
            messages << QByteArray("\x91", 1) + number + '\x7f';
            break;
        }
    }
    return messages;
}

juce::MidiMessage asMessage(const QByteArray& bytes)
{
    return {bytes.constData(), static_cast<int>(bytes.size()), 0.0};
}

/// Everything a parser has sent since, as bytes.
class Heard
{
public:
    explicit Heard(Parser& parser)
    {
        QObject::connect(&parser, &Parser::signal_DistributeMIDI, [this](const MidiMessage& sent) {
            messages << QByteArray(reinterpret_cast<const char*>(sent.getRawData()),
                                   sent.getRawDataSize());
        });
    }
    QList<QByteArray> messages;
};

int debugLines = 0;
void countDebugLines(QtMsgType, const QMessageLogContext&, const QString& text)
{
    debugLines += text.trimmed() == "midi?" ? 1 : 0;
}
} // namespace

class TestMidiSensorParser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void casts();
    void constructionValues();
    void driverAnswers();
    void blockHandsOverItsMessages_data();
    void blockHandsOverItsMessages();
    void playerDeliversWhatComesIn_data() { blockHandsOverItsMessages_data(); }
    void playerDeliversWhatComesIn();
    void driverGoesWithItsParser();
};

void TestMidiSensorParser::casts()
{
    Monitor monitor(nullptr);
    Parser parser(&monitor, nullptr);
    auto* driver = dynamic_cast<Quillon_MIDISensorParserDriver*>(parser.getCurrentProcessor());
    QVERIFY(driver != nullptr);
    QCOMPARE(parser.qt_metacast("AudioProcessorPlayer"),
             static_cast<void*>(static_cast<juce::AudioProcessorPlayer*>(&parser)));
    QCOMPARE(driver->qt_metacast("AudioProcessor"),
             static_cast<void*>(static_cast<juce::AudioProcessor*>(driver)));
    for (const char* name :
         {"Quillon_MIDISensorParser", "Quillon_Zorvi_0908_AssemblyTester_Parser"})
        QCOMPARE(parser.qt_metacast(name), static_cast<void*>(&parser));
    QCOMPARE(driver->qt_metacast("Quillon_MIDISensorParserDriver"), static_cast<void*>(driver));
    QCOMPARE(parser.qt_metacast("AudioProcessor"), nullptr);
}

void TestMidiSensorParser::constructionValues()
{
    Monitor monitor(nullptr);
    const OpenParser parser(&monitor, nullptr);
    QVERIFY(parser.monitor == &monitor);
    QCOMPARE(parser.sensorValues, zeros);
    QCOMPARE(parser.lastBlockTime, qint64(-1));
    QCOMPARE(parser.lastController, qint32(-1));
    QCOMPARE(parser.initialValue, qint32(0));
}

void TestMidiSensorParser::driverAnswers()
{
    Monitor monitor(nullptr);
    Parser parser(&monitor, nullptr);
    auto* driver = dynamic_cast<Quillon_MIDISensorParserDriver*>(parser.getCurrentProcessor());
    QVERIFY(driver->getName().isEmpty() && driver->getProgramName(0).isEmpty());
    QVERIFY(driver->hasEditor() && driver->createEditor() == nullptr);
    QVERIFY(driver->acceptsMidi() && driver->producesMidi() &&
            driver->silenceInProducesSilenceOut());
    QCOMPARE(driver->getTailLengthSeconds(), 0.0);
    QCOMPARE(driver->getNumPrograms() + driver->getCurrentProgram(), 0);
}

void TestMidiSensorParser::blockHandsOverItsMessages_data()
{
    QTest::addColumn<int>("messages");
    QTest::newRow("none") << 0;
    QTest::newRow("one") << 1;
    QTest::newRow("many") << 300;
}

void TestMidiSensorParser::blockHandsOverItsMessages()
{
    QFETCH(int, messages);
    Monitor monitor(nullptr);
    Parser parser(&monitor, nullptr);
    const Heard heard(parser);
    juce::AudioBuffer<float> audio(2, 64);
    for (int channel = 0; channel < 2; ++channel)
        juce::FloatVectorOperations::fill(audio.getWritePointer(channel), 0.5F, 64);
    juce::MidiBuffer midi;
    const QList<QByteArray> sent = someMessages(messages);
    for (int i = 0; i < messages; ++i)
        midi.addEvent(asMessage(sent[i]), i / 10);

    debugLines = 0;
    const QtMessageHandler before = qInstallMessageHandler(countDebugLines);
    parser.getCurrentProcessor()->processBlock(audio, midi);
    qInstallMessageHandler(before);
    QCOMPARE(heard.messages, sent);
    QCOMPARE(debugLines, messages);
    QVERIFY(midi.isEmpty());
    QCOMPARE(audio.getMagnitude(0, 64), 0.0F);
}

void TestMidiSensorParser::playerDeliversWhatComesIn()
{
    QFETCH(int, messages);
    Monitor monitor(nullptr);
    Parser parser(&monitor, nullptr);
    const Heard heard(parser);
    SilentDevice device;
    parser.audioDeviceAboutToStart(&device);
    const QList<QByteArray> sent = someMessages(messages);
    const double now = juce::Time::getMillisecondCounterHiRes() * 0.001;
    for (const QByteArray& bytes : sent)
        parser.handleIncomingMidiMessage(nullptr, asMessage(bytes).withTimeStamp(now));
    QVERIFY(heard.messages.isEmpty());

    float left[64];
    float right[64];
    std::fill_n(left, 64, 0.5F);
    std::fill_n(right, 64, 0.5F);
    float* outputs[] = {left, right};
    const QtMessageHandler before = qInstallMessageHandler(countDebugLines);
    for (int block = 0; block < 3; ++block) // nothing comes twice
        parser.audioDeviceIOCallbackWithContext(nullptr, 0, outputs, 2, 64, {});
    qInstallMessageHandler(before);
    QCOMPARE(heard.messages, sent);
    QCOMPARE(*std::max_element(left, left + 64), 0.0F);
    QCOMPARE(*std::max_element(right, right + 64), 0.0F);
    parser.audioDeviceStopped();
}

void TestMidiSensorParser::driverGoesWithItsParser()
{
    Monitor monitor(nullptr);
    auto parser = std::make_unique<Parser>(&monitor, nullptr);
    auto* driver = dynamic_cast<QObject*>(parser->getCurrentProcessor());
    QCOMPARE(driver->parent(), parser.get());
    QThread thread;
    parser->moveToThread(&thread);
    QCOMPARE(driver->thread(), &thread);
    int destroyed = 0;
    connect(driver, &QObject::destroyed, [&destroyed] { ++destroyed; });
    parser.reset();
    QCOMPARE(destroyed, 1);
}

QTEST_GUILESS_MAIN(TestMidiSensorParser)
#include "test_midisensorparser.moc"
