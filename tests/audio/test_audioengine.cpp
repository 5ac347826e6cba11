// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "audio/beepdebounce.h"
#include "audio/soundfiles.h"
#include "tests/audio/expectedsound.h"

#include <QtTest>

#include <cmath>
#include <thread>

namespace
{
/// What the engine plays on the last channel, in whole blocks, after what was heard before.
Samples play(AudioEngine& engine, std::size_t samples, int blockSize = 512, int channels = 2,
             Samples heard = {})
{
    juce::AudioBuffer<float> buffer(channels, blockSize);
    for (samples += heard.size(); heard.size() < samples;) {
        for (int channel = 0; channel < channels; ++channel) // must not be heard
            juce::FloatVectorOperations::fill(buffer.getWritePointer(channel), 0.7F, blockSize);
        engine.getNextAudioBlock(juce::AudioSourceChannelInfo(buffer));
        const float* last = buffer.getReadPointer(channels - 1);
        heard.insert(heard.end(), last, last + blockSize);
    }
    return heard;
}

void ask(AudioEngine& engine, char request)
{
    if (request == 'b')
        engine.slot_Beep();
    if (request == 'c')
        engine.slot_Click();
    if (request == 'd')
        engine.slot_Ding();
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

    void requestsSoundInLayers_data()
    {
        QTest::addColumn<QByteArray>("requests"); // one for each block
        QTest::addColumn<double>("rate");
        QTest::addColumn<int>("blockSize");
        QTest::addColumn<int>("channels");
        QTest::addColumn<bool>("allHeard");
        const auto row = [](const char* name, const QByteArray& requests, double rate = fileRate,
                            int blockSize = 512, int channels = 2, bool allHeard = true) {
            QTest::newRow(name) << requests << rate << blockSize << channels << allHeard;
        };
        row("a note stops the one like it alone", "dcbcd");
        row("mono device, blocks of one sample", "c", fileRate, 1, 1);
        row("48 kHz device", "b", 48000, 480);
        row("rate with a fraction, long blocks", "d", 192000.9, 8192);
        row("a fader swept in half a second", "d..c..c..c..c..c..cbdc..c..c..c..c..c..cd");
        // Stopped notes keep their voices, of which there are 39, until their samples end: a ding
        // one, a click one for its bell. The beep at the end finds three for its layers.
        row("39 voices", "cc" + QByteArray(34, 'd') + 'b');
        row("40: a click ends", "cc" + QByteArray(35, 'd') + 'b', fileRate, 512, 2, false);
        row("all taken by dings", QByteArray(60, 'd') + 'b');
        row("all taken by clicks", QByteArray(45, 'c') + 'b');
    }

    /// Three requests for one block are one, and a block without a buffer leaves them be.
    void requestsSoundInLayers()
    {
        QFETCH(QByteArray, requests);
        QFETCH(double, rate);
        QFETCH(int, blockSize);
        QFETCH(int, channels);
        QFETCH(bool, allHeard);
        engine->prepareToPlay(blockSize, rate);
        std::vector<Begin> begins;
        Samples heard = play(*engine, 1000, blockSize, channels);
        QCOMPARE(peak(heard), 0.0);
        for (const char request : requests) {
            for (int i = 0; i < 3; ++i)
                ask(*engine, request);
            engine->getNextAudioBlock({nullptr, 0, blockSize});
            begins.push_back({request, heard.size()});
            heard = play(*engine, 1, blockSize, channels, heard);
        }
        const auto expected = mixOf(begins, std::floor(rate));
        heard = play(*engine, expected.size(), blockSize, channels, heard);
        QCOMPARE(distance(heard, expected) < inaudible, allHeard);
        QVERIFY(peak(heard) > 50 * inaudible && peak(heard) < 1.0);
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
        QVERIFY(distance(play(*engine, 60000, 512, 2, begin), mixOf({{'d'}})) < inaudible);
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

    /// The engine looks at its requests for many milliseconds after it has cleared so long a block.
    /// Where the machine is busy, the request gets another try.
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

    /// Of a sound file as it may be ten seconds are played; one that cannot be played is named.
    void soundFiles()
    {
        QProcess sox; // writes to a pipe: the header cannot know the length
        sox.start("sox", {soundPath("Bell"), "-t", "wav", "-", "repeat", "8"});
        QVERIFY(sox.waitForFinished());
        const QByteArray streamed = sox.readAllStandardOutput();
        QByteArray empty = streamed; // by its header
        empty.replace(40, 4, QByteArray(4, '\0'));
        const QString folder = QCoreApplication::applicationDirPath();
        for (const QString sound : {"Beep", "Click", "Bell"}) {
            QFile file(soundPath(sound));
            QVERIFY(file.rename(folder + "/original"));
            const auto restored = qScopeGuard([&] {
                QFile::remove(soundPath(sound));
                file.rename(soundPath(sound));
            });
            const auto problem = [&](const QByteArray& contents) {
                QFile changed(soundPath(sound));
                changed.open(QIODevice::WriteOnly);
                changed.write(contents);
                changed.close();
                return soundFileProblem(folder);
            };
            for (const auto& contents : {streamed, streamed.left(50000), streamed.left(46)}) {
                QCOMPARE(problem(contents), QString());
                init();
                engine->slot_Ding();
                QVERIFY(distance(play(*engine, 500000), mixOf({{'d'}})) < inaudible);
            }
            QStringList problems;
            for (const auto& contents :
                 {QByteArray(), QByteArray(5000, 'x'), streamed.left(20), streamed.left(44), empty})
                problems << problem(contents);
            QFile::remove(soundPath(sound));
            problems << soundFileProblem(folder);
            for (const QString& text : problems)
                QVERIFY2(text.contains(soundPath(sound)) && !text.contains('\n'), qPrintable(text));
        }
    }
};

QTEST_GUILESS_MAIN(TestAudioEngine)
#include "test_audioengine.moc"
