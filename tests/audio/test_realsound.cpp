// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/audio/expectedsound.h"
#include "tests/audio/soundserver.h"

#include <juce_audio_utils/juce_audio_utils.h>

#include <QtTest>

#include <algorithm>
#include <cmath>
#include <functional>

namespace
{
/// The share of a sound that has nearly all of its energy, before it dies away.
constexpr double enough = 0.5;

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
    /// Sets the device's rate; false where there is none or it does not follow.
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

/// What is recorded from the start of some work on a new engine until all has rung out.
std::vector<double> recordingOf(int rate, const std::function<void(AudioEngine&)>& work)
{
    constexpr int longestRequestMs = 1500;
    SoundServer server;
    if (!server.start(rate))
        qFatal("the sound server does not start");
    Playback playback;
    if (!playback.setRate(rate) || !server.startRecording())
        qFatal("the sound device does not play at %d Hz", rate);
    work(playback.engine);
    QTest::qWait(longestRequestMs);
    return server.stopRecording();
}

std::vector<double> withoutSilence(std::vector<double> samples)
{
    samples.erase(std::remove(samples.begin(), samples.end(), 0.0), samples.end());
    return samples;
}

/// How much of a sound is heard from its start on, sample by sample, silences left out: 1 is all.
/// A busy machine loses blocks: of a few recordings the best one counts.
double shareHeard(const std::vector<double>& sound,
                  const std::function<std::vector<double>()>& record)
{
    const auto wanted = withoutSilence(sound);
    double best = 0.0;
    for (int take = 0; take < 10 && best < enough; ++take) {
        auto heard = withoutSilence(record());
        heard.resize(wanted.size());
        const auto end =
            std::mismatch(wanted.begin(), wanted.end(), heard.begin(), [](double a, double b) {
                return std::abs(a - b) < inaudible;
            }).first;
        best = std::max(best, static_cast<double>(end - wanted.begin()) /
                                  static_cast<double>(wanted.size()));
    }
    return best;
}
} // namespace

/// What is heard through a real sound server: requests played by the engine on the device that the
/// station would open, recorded and compared with the sound files, sample by sample.
class TestRealSound : public QObject
{
    Q_OBJECT

    const juce::ScopedJuceInitialiser_GUI juceLibrary;

private Q_SLOTS:
    void init()
    {
        if (!SoundServer::isInstalled())
            QSKIP("needs PulseAudio (pulseaudio, parec and ALSA's pulse plugin)");
    }

    void requestsAreHeardAsTheirLayers_data()
    {
        QTest::addColumn<const Request*>("request");
        QTest::addColumn<int>("rate");
        for (const int rate : {44100, 48000}) {
            QTest::addRow("click at %d Hz", rate) << &click << rate;
            QTest::addRow("beep at %d Hz", rate) << &beep << rate;
            QTest::addRow("bell at %d Hz", rate) << &bell << rate;
        }
    }

    void requestsAreHeardAsTheirLayers()
    {
        QFETCH(const Request*, request);
        QFETCH(int, rate);
        const double share = shareHeard(samplesOf(*request, rate), [&] {
            return recordingOf(rate, [&](AudioEngine& engine) { (engine.*request->slot)(); });
        });
        QVERIFY2(share >= enough, qPrintable(QString::number(share)));
    }

    void bellGoesOnWhereItStood()
    {
        constexpr int rate = 44100;
        std::ptrdiff_t pauseAt = 0;
        const double share = shareHeard(samplesOf(bell), [&] {
            auto recording = recordingOf(rate, [](AudioEngine& engine) {
                engine.slot_Ding();
                QTest::qWait(250);
                engine.slot_SetAudioOnOff(false);
                QTest::qWait(600);
                engine.slot_SetAudioOnOff(true);
            });
            const auto begin = std::find_if(recording.cbegin(), recording.cend(),
                                            [](double sample) { return sample != 0.0; });
            pauseAt = std::search_n(begin, recording.cend(), rate / 5, 0.0) - begin;
            return recording;
        });
        QVERIFY2(share >= enough, qPrintable(QString::number(share)));
        QVERIFY2(pauseAt > rate / 10 && pauseAt < rate, "the bell does not pause");
    }

    void deviceGoesAway()
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

    void noDevice()
    {
        qputenv("PULSE_SERVER", "unix:/nonexistent");
        Playback playback;
        QVERIFY(playback.devices.getCurrentAudioDevice() == nullptr);
        playback.engine.slot_Ding();
        // What was asked for is still there for the first block that comes, whenever that is.
        playback.engine.prepareToPlay(512, 44100.0);
        juce::AudioBuffer<float> buffer(2, 4096);
        playback.engine.getNextAudioBlock(juce::AudioSourceChannelInfo(buffer));
        QVERIFY(buffer.getMagnitude(0, 4096) > 0.05F);
    }
};

QTEST_GUILESS_MAIN(TestRealSound)
#include "test_realsound.moc"
