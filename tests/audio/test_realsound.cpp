// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "audio/audioengine.h"
#include "expectedsound.h"
#include "recordinganalysis.h"
#include "soundserver.h"

#include <juce_audio_utils/juce_audio_utils.h>

#include <QtTest>

#include <cmath>

namespace
{
/// The longest layer of a request sounds for less than this.
constexpr int untilRungOutMs = 1500;

/// The engine on the system's default device, opened as the station opens it.
class Playback
{
public:
    Playback()
    {
        player.setSource(&engine);
        devices.addAudioCallback(&player);
        devices.initialise(2, 2, nullptr, true);
    }
    ~Playback()
    {
        player.setSource(nullptr);
        devices.removeAudioCallback(&player);
    }
    /// Changes the device's rate; false where it does not follow.
    bool setRate(double rate)
    {
        auto setup = devices.getAudioDeviceSetup();
        setup.sampleRate = rate;
        devices.setAudioDeviceSetup(setup, true);
        auto* device = devices.getCurrentAudioDevice();
        return device != nullptr && std::abs(device->getCurrentSampleRate() - rate) < 0.5;
    }
    juce::AudioDeviceManager devices;
    juce::AudioSourcePlayer player;
    AudioEngine engine;
};
} // namespace

/// What is heard through a real sound server: requests played by the engine on the device that the
/// station would open, recorded and taken apart again.
class TestRealSound : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void requestsAreHeardAsTheirLayers_data();
    void requestsAreHeardAsTheirLayers();
    void bellGoesOnWhereItStood();
    void deviceGoesAway();
    void noDevice();

private:
    const juce::ScopedJuceInitialiser_GUI juceLibrary;
};

void TestRealSound::init()
{
    if (!SoundServer::isInstalled())
        QSKIP("needs PulseAudio (pulseaudio, parec and ALSA's pulse plugin)");
}

void TestRealSound::requestsAreHeardAsTheirLayers_data()
{
    QTest::addColumn<int>("rate");
    QTest::newRow("device at the files' rate") << 44100;
    QTest::newRow("device at 48 kHz") << 48000;
}

void TestRealSound::requestsAreHeardAsTheirLayers()
{
    QFETCH(int, rate);
    SoundServer server;
    QVERIFY(server.start(rate));
    Playback playback;
    QVERIFY2(playback.devices.getCurrentAudioDevice() != nullptr, "no sound device was opened");
    QVERIFY(playback.setRate(rate));
    QVERIFY(server.startRecording());
    const std::vector<std::vector<Layer>> requests{clickLayers(), beepLayers(), bellLayers()};
    for (const auto slot :
         {&AudioEngine::slot_Click, &AudioEngine::slot_Beep, &AudioEngine::slot_Ding}) {
        (playback.engine.*slot)();
        QTest::qWait(untilRungOutMs);
    }
    const auto recording = server.stopRecording();
    const auto heard = soundingStretches(recording, static_cast<std::size_t>(rate) / 20);
    QCOMPARE(heard.size(), requests.size());

    // Every sound at every pitch that a note could give it, at full level.
    std::vector<Layer> all;
    std::vector<std::vector<double>> references;
    for (const char* sound : {"Beep", "Click", "Bell"})
        for (const int semitones : {0, -1, -2}) {
            all.push_back({sound, semitones, 1.0});
            references.push_back(layerSamples(all.back(), rate));
        }

    for (std::size_t i = 0; i < requests.size(); ++i) {
        const auto expected = mixedSamples(requests[i], rate);
        const std::size_t start = bestStart(recording, heard[i].begin, expected);
        QVERIFY(start + expected.size() <= recording.size());
        const double alike =
            correlation(recording.data() + start, expected.data(), expected.size());
        QVERIFY2(alike > 0.99, qPrintable(QString::number(alike)));
        const auto levels = levelsOf(references, recording, start);
        for (std::size_t k = 0; k < all.size(); ++k) {
            double wanted = 0.0;
            for (const Layer& layer : requests[i])
                if (layer.sound == all[k].sound && layer.semitones == all[k].semitones)
                    wanted = layer.level;
            const QString what = QString("request %1: %2 at %3 semitones has level %4, not %5")
                                     .arg(i)
                                     .arg(all[k].sound)
                                     .arg(all[k].semitones)
                                     .arg(levels[k])
                                     .arg(wanted);
            QVERIFY2(std::abs(levels[k] - wanted) < 0.02, qPrintable(what));
        }
    }
}

void TestRealSound::bellGoesOnWhereItStood()
{
    constexpr int rate = 44100;
    SoundServer server;
    QVERIFY(server.start(rate));
    Playback playback;
    QVERIFY(playback.devices.getCurrentAudioDevice() != nullptr);
    QVERIFY(playback.setRate(rate));
    QVERIFY(server.startRecording());
    playback.engine.slot_Ding();
    QTest::qWait(250);
    playback.engine.slot_SetAudioOnOff(false);
    QTest::qWait(600);
    playback.engine.slot_SetAudioOnOff(true);
    QTest::qWait(untilRungOutMs);
    const auto recording = server.stopRecording();

    const auto heard = soundingStretches(recording, rate / 5);
    QCOMPARE(heard.size(), std::size_t(2));
    const auto bell = mixedSamples(bellLayers(), rate);
    const std::size_t start = bestStart(recording, heard[0].begin, bell);
    const std::size_t before = heard[0].end - start;
    QVERIFY(before > rate / 10 && before < rate);
    QVERIFY(correlation(recording.data() + start, bell.data(), before) > 0.99);
    const std::vector<double> rest(bell.begin() + static_cast<std::ptrdiff_t>(before), bell.end());
    const std::size_t on = bestStart(recording, heard[1].begin, rest);
    QVERIFY(correlation(recording.data() + on, rest.data(), rest.size()) > 0.99);
    // The bell dies away so fast that a block lost or played twice would show in its level.
    const double level = levelsOf({rest}, recording, on).front();
    QVERIFY2(std::abs(level - 1.0) < 0.03, qPrintable(QString::number(level)));
}

void TestRealSound::deviceGoesAway()
{
    auto server = std::make_unique<SoundServer>();
    QVERIFY(server->start(44100));
    Playback playback;
    QVERIFY(playback.devices.getCurrentAudioDevice() != nullptr);
    playback.engine.slot_Ding();
    QTest::qWait(100);
    server.reset();
    // The GUI thread is never kept waiting, however long there is nobody to play to.
    QElapsedTimer busy;
    busy.start();
    for (int i = 0; i < 1000; ++i) {
        playback.engine.slot_Click();
        playback.engine.slot_SetAudioOnOff(i % 2 == 0);
    }
    QVERIFY(busy.elapsed() < 1000);
}

void TestRealSound::noDevice()
{
    qputenv("PULSE_SERVER", "unix:/nonexistent");
    Playback playback;
    QVERIFY(playback.devices.getCurrentAudioDevice() == nullptr);
    playback.engine.slot_Beep();
    playback.engine.slot_Ding();
    // What was asked for is still there for the first block that comes, whenever that is.
    playback.engine.prepareToPlay(512, 44100.0);
    juce::AudioBuffer<float> buffer(2, 4096);
    playback.engine.getNextAudioBlock(juce::AudioSourceChannelInfo(buffer));
    QVERIFY(buffer.getMagnitude(0, 4096) > 0.05F);
}

QTEST_GUILESS_MAIN(TestRealSound)
#include "test_realsound.moc"
