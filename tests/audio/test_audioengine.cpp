// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "audio/beepdebounce.h"
#include "tests/audio/expectedsound.h"

#include <QtTest>

#include <cmath>
#include <thread>

namespace
{
/// What the engine plays on one channel, block after block.
std::vector<double> play(AudioEngine& engine, std::size_t samples, int blockSize = 512,
                         int channels = 2)
{
    std::vector<double> heard;
    juce::AudioBuffer<float> buffer(channels, blockSize);
    while (heard.size() < samples) {
        // What a device left in its buffer must not be heard.
        for (int channel = 0; channel < channels; ++channel)
            juce::FloatVectorOperations::fill(buffer.getWritePointer(channel), 0.7F, blockSize);
        engine.getNextAudioBlock(juce::AudioSourceChannelInfo(buffer));
        const float* last = buffer.getReadPointer(channels - 1);
        heard.insert(heard.end(), last, last + blockSize);
    }
    heard.resize(samples);
    return heard;
}
} // namespace

/// The engine alone: no device, its blocks are asked for by the test.
class TestAudioEngine : public QObject
{
    Q_OBJECT

    std::unique_ptr<AudioEngine> engine;

private Q_SLOTS:
    void init()
    {
        engine = std::make_unique<AudioEngine>();
        engine->prepareToPlay(512, fileRate);
    }

    void castsAndMethodOrder()
    {
        QCOMPARE(engine->qt_metacast("AudioSource"),
                 static_cast<void*>(static_cast<juce::AudioSource*>(engine.get())));
        const QMetaObject* meta = engine->metaObject();
        QByteArrayList methods;
        for (int i = meta->methodOffset(); i < meta->methodCount(); ++i)
            methods << meta->method(i).methodSignature();
        QCOMPARE(methods, (QByteArrayList{"slot_Beep()", "slot_Click()", "slot_Ding()",
                                          "slot_SetAudioOnOff(bool)"}));
    }

    void requestSoundsAsItsLayers_data()
    {
        QTest::addColumn<const Request*>("request");
        QTest::addColumn<double>("rate");
        QTest::addColumn<int>("blockSize");
        QTest::addColumn<int>("channels");
        QTest::newRow("beep") << &beep << 44100.0 << 512 << 2;
        QTest::newRow("click") << &click << 44100.0 << 512 << 2;
        QTest::newRow("bell") << &bell << 44100.0 << 512 << 2;
        QTest::newRow("beep on a 48 kHz device") << &beep << 48000.0 << 480 << 2;
        QTest::newRow("bell at 8 kHz") << &bell << 8000.0 << 80 << 2;
        QTest::newRow("beep at 192 kHz") << &beep << 192000.0 << 1024 << 2;
        QTest::newRow("rate with a fraction") << &bell << 44100.9 << 512 << 2;
        QTest::newRow("mono device") << &beep << 44100.0 << 512 << 1;
        QTest::newRow("blocks of one sample") << &click << 44100.0 << 1 << 2;
        QTest::newRow("blocks of 8192 samples") << &beep << 44100.0 << 8192 << 2;
    }

    /// Three requests between two blocks are one, and a block without a buffer leaves them be.
    void requestSoundsAsItsLayers()
    {
        QFETCH(const Request*, request);
        QFETCH(double, rate);
        QFETCH(int, blockSize);
        QFETCH(int, channels);
        engine->prepareToPlay(blockSize, rate);
        QCOMPARE(peak(play(*engine, 1000, blockSize, channels)), 0.0);
        for (int i = 0; i < 3; ++i)
            (engine.get()->*request->slot)();
        engine->getNextAudioBlock({nullptr, 0, blockSize});
        const auto expected = samplesOf(*request, std::floor(rate));
        QVERIFY(peak(expected) > 50 * inaudible);
        const auto heard = play(*engine, expected.size() + 5000, blockSize, channels);
        QVERIFY2(distance(heard, expected) < inaudible,
                 qPrintable(QString::number(distance(heard, expected))));
    }

    void noteIsPlayedAnew()
    {
        engine->slot_Click();
        play(*engine, 4 * 512);
        engine->slot_Click();
        auto expected = samplesOf(click);
        auto heard = play(*engine, expected.size());
        // The first click's layers fade away in 10 ms; behind that, only the second one is heard.
        std::fill_n(heard.begin(), 500, 0.0);
        std::fill_n(expected.begin(), 500, 0.0);
        QVERIFY(distance(heard, expected) < inaudible);
    }

    void moreRequestsThanVoices()
    {
        for (int i = 0; i < 200; ++i) {
            engine->slot_Click();
            engine->slot_Ding();
            QVERIFY(peak(play(*engine, 64, 64)) < 1.0);
        }
        const auto expected = samplesOf(bell);
        play(*engine, 2 * expected.size());
        engine->slot_Ding();
        QVERIFY(distance(play(*engine, expected.size()), expected) < inaudible);
    }

    /// Off silences at once and drops requests; on goes on where the bell stood.
    void offAndOn()
    {
        engine->slot_Ding();
        auto heard = play(*engine, 20 * 512);
        engine->slot_Beep();
        engine->slot_SetAudioOnOff(false);
        engine->slot_Click();
        engine->slot_Ding();
        QCOMPARE(peak(play(*engine, 100 * 512)), 0.0);
        engine->slot_SetAudioOnOff(true);
        const auto expected = samplesOf(bell);
        const auto rest = play(*engine, expected.size());
        heard.insert(heard.end(), rest.begin(), rest.end());
        QVERIFY(distance(heard, expected) < inaudible);
    }

    void blockIsClearedFromItsStartButRenderedFromZero()
    {
        constexpr int length = 1200;
        constexpr int start = 600;
        constexpr int count = 400;
        juce::AudioBuffer<float> buffer(1, length);
        juce::FloatVectorOperations::fill(buffer.getWritePointer(0), 0.5F, length);
        engine->slot_Ding();
        engine->getNextAudioBlock({&buffer, start, count});

        auto expected = samplesOf(bell);
        expected.resize(count);
        QVERIFY(peak(expected) > inaudible);
        expected.resize(length);
        for (std::size_t i = 0; i < length; ++i)
            expected[i] += i >= start && i < start + count ? 0.0 : 0.5;
        const float* left = buffer.getReadPointer(0);
        QVERIFY(distance({left, left + length}, expected) < inaudible);
    }

    void requestRaisedDuringTheBlock()
    {
        // A block so long that the engine goes on looking at its requests for many milliseconds
        // after it has cleared the buffer; the request is raised one millisecond into that time.
        constexpr int length = 1 << 24;
        bool taken = false;
        for (int attempt = 0; attempt < 5 && !taken; ++attempt) {
            juce::AudioBuffer<float> buffer(1, length);
            float* samples = buffer.getWritePointer(0);
            juce::FloatVectorOperations::fill(samples, 1.0F, length);
            const volatile float* nearlyLast = samples + length - 8192;
            std::thread audioThread(
                [&] { engine->getNextAudioBlock(juce::AudioSourceChannelInfo(buffer)); });
            while (*nearlyLast != 0.0F) {
            }
            const QDeadlineTimer wellIntoTheLoop(1, Qt::PreciseTimer);
            while (!wellIntoTheLoop.hasExpired()) {
            }
            engine->slot_Ding();
            audioThread.join();
            taken = buffer.getMagnitude(0, 4096) > 0.05F;
            init();
        }
        QVERIFY(taken);
    }

    void debounceRule()
    {
        QCOMPARE(decideBeep(false, 0), BeepDecision::Sound);
        QCOMPARE(decideBeep(false, 9999), BeepDecision::Sound);
        QCOMPARE(decideBeep(true, 0), BeepDecision::Drop);
        QCOMPARE(decideBeep(true, 100), BeepDecision::Drop);
        QCOMPARE(decideBeep(true, 500), BeepDecision::Drop);
        QCOMPARE(decideBeep(true, 501), BeepDecision::Rearm);
    }

    void debounceInRealTime()
    {
        const auto beeps = [this] {
            engine->slot_Beep();
            const bool heard = peak(play(*engine, 2048)) > 0.01;
            play(*engine, 100000);
            return heard;
        };
        QVERIFY(beeps());
        QVERIFY(!beeps());
        QTest::qWait(520); // the pause itself is what is tested
        QVERIFY(!beeps());
        QVERIFY(beeps());
    }

    /// A fader swept in half a second is thirteen clicks; a bell rings for the control before and
    /// one for this one; the next control is moved too early somewhere in between.
    void loudestMomentDoesNotClip()
    {
        constexpr int blockSize = 480;
        double loudest = 0.0;
        for (const double rate : {44100.0, 48000.0, 96000.0}) {
            const int sweep = static_cast<int>(rate) / 2 / blockSize;
            for (int beepAt = 0; beepAt < 60; ++beepAt) {
                init();
                engine->prepareToPlay(blockSize, rate);
                for (int block = 0; block < sweep + 20; ++block) {
                    if (block * 13 / sweep != (block - 1) * 13 / sweep && block < sweep)
                        engine->slot_Click();
                    if (block == beepAt * sweep / 60)
                        engine->slot_Beep();
                    // Bells as close to the beep as they come.
                    if (block == beepAt * sweep / 60 - beepAt % 3 || block == sweep)
                        engine->slot_Ding();
                    loudest = std::max(loudest, peak(play(*engine, blockSize, blockSize)));
                }
            }
        }
        QVERIFY2(loudest > 0.4 && loudest < 1.0, qPrintable(QString::number(loudest)));
    }
};

QTEST_GUILESS_MAIN(TestAudioEngine)
#include "test_audioengine.moc"
