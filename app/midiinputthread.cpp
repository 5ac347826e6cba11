// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/midiinputthread.h"

#include <juce_audio_devices/juce_audio_devices.h>

#include <memory>

#if JUCE_LINUX || JUCE_BSD
namespace
{
class DeafListener final : public juce::MidiInputCallback
{
    void handleIncomingMidiMessage(juce::MidiInput*, const juce::MidiMessage&) override {}
};
} // namespace
#endif

void keepMidiInputThreadRunning()
{
#if JUCE_LINUX || JUCE_BSD
    static DeafListener listener;
    static std::unique_ptr<juce::MidiInput> input;
    if (input != nullptr)
        return;
    input = juce::MidiInput::createNewDevice("Zorvi Assembly Test", &listener);
    if (input != nullptr)
        input->start();
#endif
}
