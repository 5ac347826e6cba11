// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <juce_audio_devices/juce_audio_devices.h>

#include <memory>

/// The MIDI ports of a unit. Sends the messages that it is given and answers none, not even an
/// identity request. For one thread; needs no message loop.
class SimulatedUnit
{
public:
    /// A unit may be without the port that receives.
    enum class Ports { Both, OnlySending };

    explicit SimulatedUnit(juce::String portName = "Zorvi_Control", Ports ports = Ports::Both);

    /// Makes the ports. False, with no port made, if that is not possible; no effect on a plugged
    /// unit.
    bool plug();
    /// Removes the ports; messages already sent are still delivered.
    void unplug();
    bool isPlugged() const { return sending != nullptr; }

    /// Sends one message to every subscriber; lost while unplugged.
    void send(const juce::MidiMessage& message);

private:
    class Ignorer : public juce::MidiInputCallback
    {
        void handleIncomingMidiMessage(juce::MidiInput*, const juce::MidiMessage&) override {}
    };

    juce::String name;
    Ports kinds;
    Ignorer ignorer;
    std::unique_ptr<juce::MidiOutput> sending;
    std::unique_ptr<juce::MidiInput> listening;
};
