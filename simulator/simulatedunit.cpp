// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "simulator/simulatedunit.h"

#include <alsa/asoundlib.h>

namespace
{
bool isSequencerPresent()
{
    snd_seq_t* handle = nullptr;
    if (snd_seq_open(&handle, "default", SND_SEQ_OPEN_DUPLEX, 0) < 0)
        return false;
    snd_seq_close(handle);
    return true;
}
} // namespace

SimulatedUnit::SimulatedUnit(juce::String portName, Ports ports)
    : name(std::move(portName))
    , kinds(ports)
{
}

bool SimulatedUnit::plug()
{
    if (isPlugged())
        return true;
    // First: after a failed attempt to make a port JUCE never opens the sequencer again.
    if (!isSequencerPresent())
        return false;
    sending = juce::MidiOutput::createNewDevice(name);
    if (sending != nullptr && kinds == Ports::Both) {
        listening = juce::MidiInput::createNewDevice(name, &ignorer);
        if (listening == nullptr)
            sending.reset();
    }
    return isPlugged();
}

void SimulatedUnit::unplug()
{
    sending.reset();
    listening.reset();
}

void SimulatedUnit::send(const juce::MidiMessage& message)
{
    if (sending != nullptr)
        sending->sendMessageNow(message);
}
