// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "audio/audioengine.h"

#include <QCoreApplication>

#include <iostream>
#include <thread>

/// What the station's threads do to the engine, without an event loop, for the thread sanitizer to
/// look at. Fails by itself only if nothing was heard. The monitor is left out: the sanitizer does
/// not see the locks inside of Qt's mutexes, and reports what they protect.
int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    AudioEngine engine;
    engine.prepareToPlay(512, 44100.0);
    float loudest = 0.0F;
    std::thread audio([&] {
        juce::AudioBuffer<float> buffer(2, 512);
        for (int i = 0; i < 1000; ++i) {
            engine.getNextAudioBlock(juce::AudioSourceChannelInfo(buffer));
            loudest = std::max(loudest, buffer.getMagnitude(0, 512));
        }
    });
    for (int i = 0; i < 20000; ++i) {
        engine.slot_Beep();
        engine.slot_Click();
        engine.slot_Ding();
        engine.slot_SetAudioOnOff(i % 64 != 0);
    }
    engine.slot_SetAudioOnOff(true);
    audio.join();
    std::cout << (loudest > 0.0F ? "requests were heard" : "nothing was heard") << std::endl;
    return loudest > 0.0F ? EXIT_SUCCESS : EXIT_FAILURE;
}
