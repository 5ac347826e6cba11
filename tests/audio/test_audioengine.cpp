// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "audio/audioengine.h"
#include "audio/beepdebounce.h"
#include "expectedsound.h"
#include "offlineplayback.h"

#include <QtTest>

#include <cmath>
#include <thread>

Q_DECLARE_METATYPE(BeepDecision)

namespace
{
using Request = void (AudioEngine::*)();
} // namespace

/// The engine alone: no device, its blocks are asked for by the test.
class TestAudioEngine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void casts();
    void requestSoundsAsItsLayers_data();
    void requestSoundsAsItsLayers();
    void requestsMergeUntilTheNextBlock();
    void noteIsPlayedAnew();
    void moreRequestsThanVoices();
    void requestsWhileOffAreDropped();
    void bellGoesOnWhereItStood();
    void blockIsClearedFromItsStartButRenderedFromZero();
    void blockWithoutBuffer();
    void requestRaisedDuringTheBlock();
    void debounceRule_data();
    void debounceRule();
    void debounceInRealTime();
};

void TestAudioEngine::casts()
{
    AudioEngine engine;
    QCOMPARE(engine.qt_metacast("AudioEngine"), static_cast<void*>(&engine));
    QCOMPARE(engine.qt_metacast("AudioSource"),
             static_cast<void*>(static_cast<juce::AudioSource*>(&engine)));
    const QMetaObject* meta = engine.metaObject();
    const int first = meta->methodOffset();
    const QList<QByteArray> slotsInOrder{"slot_Beep()", "slot_Click()", "slot_Ding()",
                                         "slot_SetAudioOnOff(bool)"};
    QCOMPARE(meta->methodCount() - first, slotsInOrder.size());
    for (int i = 0; i < slotsInOrder.size(); ++i)
        QCOMPARE(meta->method(first + i).methodSignature(), slotsInOrder[i]);
}

void TestAudioEngine::requestSoundsAsItsLayers_data()
{
    QTest::addColumn<int>("request");
    QTest::addColumn<double>("deviceRate");
    QTest::addColumn<int>("blockSize");
    QTest::addColumn<int>("channels");
    QTest::newRow("beep") << 0 << 44100.0 << 512 << 2;
    QTest::newRow("click") << 1 << 44100.0 << 512 << 2;
    QTest::newRow("bell") << 2 << 44100.0 << 512 << 2;
    QTest::newRow("beep on a 48 kHz device") << 0 << 48000.0 << 480 << 2;
    QTest::newRow("bell at 8 kHz") << 2 << 8000.0 << 80 << 2;
    QTest::newRow("beep at 192 kHz") << 0 << 192000.0 << 1024 << 2;
    QTest::newRow("rate with a fraction") << 2 << 44100.9 << 512 << 2;
    QTest::newRow("mono device") << 0 << 44100.0 << 512 << 1;
    QTest::newRow("blocks of one sample") << 0 << 44100.0 << 1 << 2;
    QTest::newRow("blocks of 8192 samples") << 0 << 44100.0 << 8192 << 2;
}

void TestAudioEngine::requestSoundsAsItsLayers()
{
    QFETCH(int, request);
    QFETCH(double, deviceRate);
    QFETCH(int, blockSize);
    QFETCH(int, channels);
    const Request requests[] = {&AudioEngine::slot_Beep, &AudioEngine::slot_Click,
                                &AudioEngine::slot_Ding};
    const std::vector<Layer> layers[] = {beepLayers(), clickLayers(), bellLayers()};

    AudioEngine engine;
    engine.prepareToPlay(blockSize, deviceRate);
    QCOMPARE(peak(play(engine, 1000, blockSize, channels)), 0.0);
    (engine.*requests[request])();
    const auto expected = mixedSamples(layers[request], std::floor(deviceRate));
    QVERIFY(peak(expected) > 50 * inaudible);
    const auto heard = play(engine, expected.size() + 5000, blockSize, channels);
    QVERIFY2(distance(heard, expected) < inaudible,
             qPrintable(QString::number(distance(heard, expected))));
}

void TestAudioEngine::requestsMergeUntilTheNextBlock()
{
    AudioEngine engine;
    engine.prepareToPlay(512, rate);
    for (int i = 0; i < 3; ++i)
        engine.slot_Click();
    const auto expected = mixedSamples(clickLayers(), rate);
    QVERIFY(distance(play(engine, expected.size()), expected) < inaudible);
}

void TestAudioEngine::noteIsPlayedAnew()
{
    AudioEngine engine;
    engine.prepareToPlay(512, rate);
    const auto expected = mixedSamples(clickLayers(), rate);
    engine.slot_Click();
    play(engine, 4 * 512);
    engine.slot_Click();
    auto heard = play(engine, expected.size());
    // The first click's layers fade away in 10 ms; behind that, only the second one is heard.
    auto rest = expected;
    std::fill_n(heard.begin(), 500, 0.0);
    std::fill_n(rest.begin(), 500, 0.0);
    QVERIFY(distance(heard, rest) < inaudible);
}

void TestAudioEngine::moreRequestsThanVoices()
{
    AudioEngine engine;
    engine.prepareToPlay(64, rate);
    for (int i = 0; i < 200; ++i) {
        engine.slot_Click();
        engine.slot_Ding();
        QVERIFY(peak(play(engine, 64, 64)) < 1.0);
    }
    const auto expected = mixedSamples(bellLayers(), rate);
    play(engine, 2 * expected.size());
    engine.slot_Ding();
    QVERIFY(distance(play(engine, expected.size()), expected) < inaudible);
}

void TestAudioEngine::requestsWhileOffAreDropped()
{
    AudioEngine engine;
    engine.prepareToPlay(512, rate);
    engine.slot_Beep();
    engine.slot_Click();
    engine.slot_Ding();
    engine.slot_SetAudioOnOff(false);
    QCOMPARE(peak(play(engine, 512)), 0.0);
    engine.slot_SetAudioOnOff(true);
    QCOMPARE(peak(play(engine, 4096)), 0.0);
}

void TestAudioEngine::bellGoesOnWhereItStood()
{
    AudioEngine engine;
    engine.prepareToPlay(512, rate);
    const auto expected = mixedSamples(bellLayers(), rate);
    engine.slot_Ding();
    auto heard = play(engine, 20 * 512);
    engine.slot_SetAudioOnOff(false);
    QCOMPARE(peak(play(engine, 100 * 512)), 0.0);
    engine.slot_SetAudioOnOff(true);
    const auto rest = play(engine, expected.size());
    heard.insert(heard.end(), rest.begin(), rest.end());
    QVERIFY(distance(heard, expected) < inaudible);
}

void TestAudioEngine::blockIsClearedFromItsStartButRenderedFromZero()
{
    AudioEngine engine;
    engine.prepareToPlay(512, rate);
    constexpr int start = 600;
    constexpr int count = 400;
    juce::AudioBuffer<float> buffer(2, 1200);
    for (int channel = 0; channel < 2; ++channel)
        juce::FloatVectorOperations::fill(buffer.getWritePointer(channel), 0.5F, 1200);
    engine.slot_Ding();
    engine.getNextAudioBlock({&buffer, start, count});

    auto expected = mixedSamples(bellLayers(), rate);
    expected.resize(count);
    QVERIFY(peak(expected) > inaudible);
    expected.resize(1200);
    for (int i = 0; i < 1200; ++i)
        expected[static_cast<std::size_t>(i)] += i >= start && i < start + count ? 0.0 : 0.5;
    const float* left = buffer.getReadPointer(0);
    QVERIFY(distance({left, left + 1200}, expected) < inaudible);
}

void TestAudioEngine::blockWithoutBuffer()
{
    AudioEngine engine;
    engine.prepareToPlay(512, rate);
    engine.slot_Ding();
    engine.getNextAudioBlock({nullptr, 0, 512});
    const auto expected = mixedSamples(bellLayers(), rate);
    QVERIFY(distance(play(engine, expected.size()), expected) < inaudible);
}

void TestAudioEngine::requestRaisedDuringTheBlock()
{
    // A block so long that the engine goes on looking at its requests for many milliseconds after
    // it has cleared the buffer; the request is raised one millisecond into that time.
    constexpr int length = 1 << 24;
    bool taken = false;
    for (int attempt = 0; attempt < 5 && !taken; ++attempt) {
        AudioEngine engine;
        engine.prepareToPlay(length, rate);
        juce::AudioBuffer<float> buffer(1, length);
        float* samples = buffer.getWritePointer(0);
        juce::FloatVectorOperations::fill(samples, 1.0F, length);
        const volatile float* nearlyLast = samples + length - 8192;
        std::thread audioThread(
            [&] { engine.getNextAudioBlock(juce::AudioSourceChannelInfo(buffer)); });
        while (*nearlyLast != 0.0F) {
        }
        const QDeadlineTimer wellIntoTheLoop(1, Qt::PreciseTimer);
        while (!wellIntoTheLoop.hasExpired()) {
        }
        engine.slot_Ding();
        audioThread.join();
        taken = buffer.getMagnitude(0, 4096) > 0.05F;
    }
    QVERIFY(taken);
}

void TestAudioEngine::debounceRule_data()
{
    QTest::addColumn<bool>("timerValid");
    QTest::addColumn<qint64>("elapsed");
    QTest::addColumn<BeepDecision>("decision");
    QTest::newRow("first") << false << qint64(0) << BeepDecision::Sound;
    QTest::newRow("armed again") << false << qint64(9999) << BeepDecision::Sound;
    QTest::newRow("at once") << true << qint64(0) << BeepDecision::Drop;
    QTest::newRow("100 ms") << true << qint64(100) << BeepDecision::Drop;
    QTest::newRow("500 ms exactly") << true << qint64(500) << BeepDecision::Drop;
    QTest::newRow("501 ms") << true << qint64(501) << BeepDecision::Rearm;
}

void TestAudioEngine::debounceRule()
{
    QFETCH(bool, timerValid);
    QFETCH(qint64, elapsed);
    QTEST(decideBeep(timerValid, elapsed), "decision");
}

void TestAudioEngine::debounceInRealTime()
{
    AudioEngine engine;
    engine.prepareToPlay(512, rate);
    const auto beeps = [&engine] {
        engine.slot_Beep();
        const bool heard = peak(play(engine, 2048)) > 0.01;
        play(engine, 100000);
        return heard;
    };
    QVERIFY(beeps());
    QVERIFY(!beeps());
    QTest::qWait(520); // the pause itself is what is tested
    QVERIFY(!beeps());
    QVERIFY(beeps());
}

QTEST_GUILESS_MAIN(TestAudioEngine)
#include "test_audioengine.moc"
