// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "expectedsound.h"
#include "offlineplayback.h"

#include <QtTest>

/// The sounds themselves, and how loud they become together.
class TestSoundLevels : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void soundsStartAndEndInSilence_data();
    void soundsStartAndEndInSilence();
    void loudestMomentDoesNotClip();
};

void TestSoundLevels::soundsStartAndEndInSilence_data()
{
    QTest::addColumn<double>("longestMs");
    QTest::newRow("Beep") << 151.0;
    QTest::newRow("Click") << 20.0;
    QTest::newRow("Bell") << 1300.0;
}

void TestSoundLevels::soundsStartAndEndInSilence()
{
    QFETCH(double, longestMs);
    const auto samples = soundSamples(QTest::currentDataTag());
    QVERIFY(!samples.empty());
    QVERIFY(static_cast<double>(samples.size()) / 44.1 < longestMs);
    QVERIFY(std::abs(samples.front()) < inaudible);
    QVERIFY(std::abs(samples.back()) < inaudible);
    // Loud enough behind the attack to be told from the rest.
    const double level = QTest::currentDataTag() == QByteArray("Click") ? 20.0 / 127.0 : 1.0;
    QVERIFY(peak(layerSamples({QTest::currentDataTag(), 0, level}, rate)) > 0.05);
}

void TestSoundLevels::loudestMomentDoesNotClip()
{
    // A fader swept in half a second is thirteen clicks; a bell rings for the control before and
    // one for this one; the next control is moved too early somewhere in between.
    double loudest = 0.0;
    for (const double deviceRate : {44100.0, 48000.0, 96000.0}) {
        for (int beepAt = 0; beepAt < 60; ++beepAt) {
            AudioEngine engine;
            constexpr int blockSize = 480;
            engine.prepareToPlay(blockSize, deviceRate);
            const int blocks = static_cast<int>(deviceRate) / 2 / blockSize;
            for (int block = 0; block < blocks + 20; ++block) {
                if (block * 13 / blocks != (block - 1) * 13 / blocks && block < blocks)
                    engine.slot_Click();
                if (block == beepAt * blocks / 60)
                    engine.slot_Beep();
                // Bells as close to the beep as they come.
                if (block == beepAt * blocks / 60 - beepAt % 3 || block == blocks)
                    engine.slot_Ding();
                loudest = std::max(loudest, peak(play(engine, blockSize, blockSize)));
            }
        }
    }
    qInfo("loudest moment: %.3f of full scale", loudest);
    QVERIFY(loudest < 1.0);
    QVERIFY(loudest > 0.4); // all of it sounded
}

QTEST_GUILESS_MAIN(TestSoundLevels)
#include "test_soundlevels.moc"
