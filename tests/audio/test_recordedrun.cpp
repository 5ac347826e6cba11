// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "audio/audioengine.h"
#include "expectedsound.h"
#include "soundserver.h"
#include "yield/stationlog.h"

#include <QFile>
#include <QRegularExpression>
#include <QtTest>

#include <juce_audio_basics/juce_audio_basics.h>

#include <algorithm>
#include <numeric>

namespace
{
/// Counts a sound in a recording by a stretch of its file that no other sound is like, at the
/// level that it is played with. Of two that begin within the distance only the louder counts.
struct Ear {
    QString sound;
    double level;
    std::ptrdiff_t from, length, distance; ///< In samples.

    int count(const std::vector<double>& recording) const
    {
        const auto samples = soundSamples(sound);
        const double* stretch = samples.data() + from;
        const double whole = level * std::inner_product(stretch, stretch + length, stretch, 0.0);
        std::vector<double> levels;
        for (auto i = recording.begin(); recording.end() - i >= length; ++i)
            levels.push_back(std::inner_product(stretch, stretch + length, i, 0.0) / whole);
        int found = 0;
        for (auto i = levels.begin(); i != levels.end(); ++i)
            if (*i > 0.5)
                found += i == std::max_element(i - std::min(distance, i - levels.begin()),
                                               i + std::min(distance, levels.end() - i));
        return found;
    }
};

// The tick, which begins 10 ms into the click and is over before the next block; the strike, from
// where the bell before it is cut off; some of the beep.
const Ear clickEar{"Click", 20.0 / 127.0, 441, 300, 400};
const Ear bellEar{"Bell", 50.0 / 127.0, 250, 1250, 2000};
const Ear beepEar{"Beep", 100.0 / 127.0, 1000, 1000, 6000};

/// How many requests that come every so many samples can have merged because a busy machine kept
/// the device waiting: a bell rings on through the whole run, so silence within it is a hole, and
/// three blocks were on their way when it began.
int mergedAtMost(const std::vector<double>& recording, std::ptrdiff_t period)
{
    constexpr int shortestHole = 20;
    constexpr int onTheirWay = 3 * 512;
    std::ptrdiff_t merged = 0;
    const auto sounds = [](double sample) { return sample != 0.0; };
    auto end = std::find_if(recording.begin(), recording.end(), sounds);
    while (end != recording.end()) {
        const auto hole = std::find(end, recording.end(), 0.0);
        end = std::find_if(hole, recording.end(), sounds);
        if (end != recording.end() && end - hole > shortestHole)
            merged += (end - hole + onTheirWay) / period;
    }
    return static_cast<int>(merged);
}
} // namespace

/// Whole runs of the demo, heard through a real sound server.
class TestRecordedRun : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// The ears themselves: sounds over each other, closer than a run brings them.
    void earsTellSoundsApart()
    {
        AudioEngine engine;
        engine.prepareToPlay(512, 44100.0);
        juce::AudioBuffer<float> block(1, 512);
        std::vector<double> recording;
        // One letter a block: click, bell ("ding"), both, none.
        for (const char request : QByteArray("cc..cc...D....d....D....d.........D....c......")) {
            if (request == 'c' || request == 'D')
                engine.slot_Click();
            if (request == 'd' || request == 'D')
                engine.slot_Ding();
            engine.getNextAudioBlock(juce::AudioSourceChannelInfo(block));
            recording.insert(recording.end(), block.getReadPointer(0),
                             block.getReadPointer(0) + 512);
        }
        QCOMPARE(clickEar.count(recording), 8);
        QCOMPARE(bellEar.count(recording), 5);
        QCOMPARE(beepEar.count(recording), 0);
    }

    void everyRequestIsHeardOnce_data()
    {
        QTest::addColumn<bool>("isSlow"); // slow enough for every click and bell to stand alone
        QTest::addColumn<int>("beeps");
        // A band takes 50 ms, a button 200 ms; blocks of 12 ms merge what comes closer.
        QTest::newRow("--pace 200") << true << 0;
        QTest::newRow("--pace 2000 --fault too-early") << false << 1;
    }

    void everyRequestIsHeardOnce()
    {
        if (!SoundServer::isInstalled())
            QSKIP("needs PulseAudio (pulseaudio, parec and ALSA's pulse plugin)");
        QFETCH(bool, isSlow);
        QFETCH(int, beeps);
        SoundServer server;
        QVERIFY(server.start(44100));
        QVERIFY(server.startRecording());
        const QTemporaryDir pictures;
        QProcess demo;
        demo.start(ZORVI_DEMO, QString("--once --serial RECORDED --output %1 %2")
                                   .arg(pictures.path(), QTest::currentDataTag())
                                   .split(' '));
        QVERIFY(demo.waitForStarted());
        QTRY_COMPARE_WITH_TIMEOUT(demo.state(), QProcess::NotRunning, 60000);
        const auto recording = server.stopRecording();
        QCOMPARE(demo.exitCode(), 0);

        const QString output = QString::fromLocal8Bit(demo.readAllStandardOutput());
        QFile log(QRegularExpression("^Log: (.*)$", QRegularExpression::MultilineOption)
                      .match(output)
                      .captured(1));
        QVERIFY(log.open(QIODevice::ReadOnly));
        QString reason;
        const auto read = stationlog::read(log.readAll(), reason);
        QVERIFY2(read, qPrintable(reason));
        const auto covered = static_cast<int>(read->marks.count());
        int passed = 0;
        for (int c = roster::firstComponent; c <= roster::lastComponent; ++c) {
            bool isPassed = bandmarks::bandCount(c) > 0;
            for (int band = 0; band < bandmarks::bandCount(c); ++band)
                isPassed = isPassed && read->marks[bandmarks::markIndex(c, band)];
            passed += isPassed ? 1 : 0;
        }
        QVERIFY(covered > passed && passed > 0);
        QCOMPARE(beepEar.count(recording), beeps);
        if (!isSlow)
            return;
        constexpr int bandSamples = 2205;
        constexpr int buttonSamples = 8820;
        if (mergedAtMost(recording, bandSamples) > 10)
            QSKIP("the machine is too busy: the sound device was kept waiting");
        const auto verify = [&](const Ear& ear, int requests, int period) {
            const int heard = ear.count(recording);
            const int merged = mergedAtMost(recording, period);
            const auto what = QString("%1: %2 of %3 heard, %4 or fewer merged")
                                  .arg(ear.sound)
                                  .arg(heard)
                                  .arg(requests)
                                  .arg(merged);
            qInfo("%s", qPrintable(what));
            QVERIFY2(heard <= requests && heard >= requests - merged, qPrintable(what));
        };
        verify(clickEar, covered, bandSamples);
        verify(bellEar, passed, buttonSamples);
    }
};

QTEST_GUILESS_MAIN(TestRecordedRun)
#include "test_recordedrun.moc"
