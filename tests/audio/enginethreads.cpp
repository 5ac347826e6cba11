// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "audio/audioengine.h"

#include <QCoreApplication>

#include <iostream>
#include <thread>

namespace
{
constexpr int rounds = 20000;

/// The audio thread's side; true if anything was heard.
bool makeBlocks(AudioEngine& engine)
{
    juce::AudioBuffer<float> buffer(2, 512);
    float loudest = 0.0F;
    for (int i = 0; i < rounds / 20; ++i) {
        engine.getNextAudioBlock(juce::AudioSourceChannelInfo(buffer));
        loudest = std::max(loudest, buffer.getMagnitude(0, 512));
    }
    return loudest > 0.0F;
}

void request(AudioEngine& engine)
{
    for (int i = 0; i < rounds; ++i) {
        engine.slot_Beep();
        engine.slot_Click();
        engine.slot_Ding();
        engine.slot_SetAudioOnOff(i % 64 != 0);
    }
}
} // namespace

/// What the station's threads do to the engine, without an event loop, for the thread sanitizer to
/// look at. Fails by itself only if nothing was heard. The monitor is left out: the sanitizer does
/// not see the locks inside of Qt's mutexes, and reports what they protect.
int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    AudioEngine engine;
    engine.prepareToPlay(512, 44100.0);
    bool heard = false;
    std::thread audio([&] { heard = makeBlocks(engine); });
    request(engine);
    engine.slot_SetAudioOnOff(true);
    audio.join();

    std::cout << (heard ? "requests were heard" : "nothing was heard") << std::endl;
    return heard ? EXIT_SUCCESS : EXIT_FAILURE;
}
