// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <juce_audio_devices/juce_audio_devices.h>

#include <memory>

/// A unit's MIDI ports, without the unit. It sends what it is told to and answers nothing, not even
/// an identity request. Its functions are for one thread and need no message loop.
class SimulatedUnit
{
public:
    /// The port through which a unit can be spoken to may be left out.
    enum class Ports { Both, OnlySending };

    explicit SimulatedUnit(juce::String portName = "Zorvi_Control", Ports ports = Ports::Both);

    /// Whether the machine has a MIDI sequencer that ports can be made on.
    static bool isSequencerPresent();

    /// Makes the ports. False, and nothing made, where that is not possible; plugging in what is
    /// plugged in changes nothing.
    bool plug();
    /// Takes the ports away; what was sent and not yet read is still delivered.
    void unplug();
    bool isPlugged() const { return sending != nullptr; }

    /// Sends one message to whoever listens; lost while unplugged.
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
