// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "audio/beepdebounce.h"
#include "tests/audio/expectedsound.h"

#include <QtTest>

#include <cmath>
#include <thread>

namespace
{
/// What the engine plays on the last channel, in whole blocks.
Samples play(AudioEngine& engine, std::size_t samples, int blockSize = 512, int channels = 2)
{
    Samples heard;
    juce::AudioBuffer<float> buffer(channels, blockSize);
    while (heard.size() < samples) {
        // What a device left in its buffer must not be heard.
        for (int channel = 0; channel < channels; ++channel)
            juce::FloatVectorOperations::fill(buffer.getWritePointer(channel), 0.7F, blockSize);
        engine.getNextAudioBlock(juce::AudioSourceChannelInfo(buffer));
        const float* last = buffer.getReadPointer(channels - 1);
        heard.insert(heard.end(), last, last + blockSize);
    }
    return heard;
}

Samples operator+(Samples a, const Samples& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
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

    void requestSoundsAsItsLayers_data()
    {
        QTest::addColumn<char>("request");
        QTest::addColumn<double>("rate");
        QTest::addColumn<int>("blockSize");
        QTest::addColumn<int>("channels");
        QTest::newRow("beep") << 'b' << 44100.0 << 512 << 2;
        QTest::newRow("click in blocks of one sample") << 'c' << 44100.0 << 1 << 2;
        QTest::newRow("beep on a 48 kHz device") << 'b' << 48000.0 << 480 << 2;
        QTest::newRow("rate with a fraction, long blocks") << 'd' << 192000.9 << 8192 << 2;
        QTest::newRow("mono device") << 'd' << 44100.0 << 512 << 1;
    }

    /// Three requests between two blocks are one, and a block without a buffer leaves them be.
    void requestSoundsAsItsLayers()
    {
        QFETCH(char, request);
        QFETCH(double, rate);
        QFETCH(int, blockSize);
        QFETCH(int, channels);
        engine->prepareToPlay(blockSize, rate);
        QCOMPARE(peak(play(*engine, 1000, blockSize, channels)), 0.0);
        for (int i = 0; i < 3; ++i)
            ask(*engine, request);
        engine->getNextAudioBlock({nullptr, 0, blockSize});
        const auto expected = mixOf({{request}}, std::floor(rate));
        QVERIFY(peak(expected) > 50 * inaudible);
        const auto heard = play(*engine, expected.size() + 5000, blockSize, channels);
        QVERIFY(distance(heard, expected) < inaudible);
    }

    void blockAfterBlock_data()
    {
        QTest::addColumn<QByteArray>("requests");
        QTest::addColumn<bool>("allHeard");
        QTest::newRow("a note stops the one like it alone") << QByteArray("dcbcd") << true;
        // Stopped notes keep their voices, of which there are 39, until their samples end: a ding
        // one, a click one for its bell. The beep at the end finds three for its layers.
        QTest::newRow("39 voices") << QByteArray("cc" + QByteArray(34, 'd') + "b") << true;
        QTest::newRow("40: a click's bell ends")
            << QByteArray("cc" + QByteArray(35, 'd') + "b") << false;
        QTest::newRow("all taken by dings") << QByteArray(QByteArray(60, 'd') + "b") << true;
        QTest::newRow("all taken by clicks") << QByteArray(QByteArray(45, 'c') + "b") << true;
    }

    void blockAfterBlock()
    {
        QFETCH(QByteArray, requests);
        QFETCH(bool, allHeard);
        std::vector<Begin> begins;
        Samples heard;
        for (const char request : requests) {
            begins.push_back({request, heard.size()});
            ask(*engine, request);
            heard = heard + play(*engine, 512);
        }
        QCOMPARE(distance(heard + play(*engine, 70000), mixOf(begins)) < inaudible, allHeard);
    }

    /// Off silences at once and drops requests; on goes on where the bell stood.
    void offAndOn()
    {
        engine->slot_Ding();
        const auto begin = play(*engine, 10000);
        engine->slot_Beep();
        engine->slot_SetAudioOnOff(false);
        engine->slot_Click();
        engine->slot_Ding();
        QCOMPARE(peak(play(*engine, 10000)), 0.0);
        engine->slot_SetAudioOnOff(true);
        QVERIFY(distance(begin + play(*engine, 60000), mixOf({{'d'}})) < inaudible);
    }

    void blockIsClearedFromItsStartButRenderedFromZero()
    {
        juce::AudioBuffer<float> buffer(1, 1200);
        juce::FloatVectorOperations::fill(buffer.getWritePointer(0), 0.5F, 1200);
        engine->slot_Ding();
        engine->getNextAudioBlock({&buffer, 600, 400});
        auto expected = mixOf({{'d'}});
        expected.resize(400);
        expected.resize(1200);
        for (std::size_t i = 0; i < 1200; ++i)
            expected[i] += i >= 600 && i < 1000 ? 0.0 : 0.5;
        const float* left = buffer.getReadPointer(0);
        QVERIFY(distance({left, left + 1200}, expected) < inaudible);
    }

    /// A block so long that the engine goes on looking at its requests for many milliseconds after
    /// it has cleared the buffer; where the machine is busy, the request gets another try.
    void requestRaisedDuringTheBlock()
    {
        constexpr int length = 1 << 24;
        juce::AudioBuffer<float> buffer(1, length);
        const volatile float* nearlyLast = buffer.getReadPointer(0) + length - 8192;
        const auto isTaken = [&] {
            init();
            juce::FloatVectorOperations::fill(buffer.getWritePointer(0), 1.0F, length);
            std::thread audioThread(
                [&] { engine->getNextAudioBlock(juce::AudioSourceChannelInfo(buffer)); });
            while (*nearlyLast != 0.0F) {
            }
            QThread::msleep(1); // well into the loop
            engine->slot_Ding();
            audioThread.join();
            return buffer.getMagnitude(0, 4096) > 0.05F;
        };
        QVERIFY(QTest::qWaitFor(isTaken));
    }

    void debounce()
    {
        QCOMPARE(decideBeep(false, 9999), BeepDecision::Sound);
        QCOMPARE(decideBeep(true, 500), BeepDecision::Drop);
        QCOMPARE(decideBeep(true, 501), BeepDecision::Rearm);
        const auto isHeard = [this] {
            engine->slot_Beep();
            return peak(play(*engine, 70000)) > 0.1;
        };
        QVERIFY(isHeard());
        QVERIFY(!isHeard());
        QTest::qWait(520);                 // the pause itself is what is tested
        QVERIFY(!isHeard());               // the first after the pause
        QVERIFY(isHeard());                // from here the time is counted anew,
        QVERIFY(QTest::qWaitFor(isHeard)); // but not from those that are dropped meanwhile
    }
};

QTEST_GUILESS_MAIN(TestAudioEngine)
#include "test_audioengine.moc"
