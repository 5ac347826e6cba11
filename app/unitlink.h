// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <juce_audio_devices/juce_audio_devices.h>

#include <alsa/asoundlib.h>

#include <memory>

/// The station's side of the MIDI link: finds the units' ports, opens an input to one, and knows
/// whether it is still subscribed. The window keeps the input and the state of the link. On the GUI
/// thread.
class UnitLink
{
public:
    /// The manager holds JUCE's client of the sequencer; it must outlive this object.
    explicit UnitLink(juce::AudioDeviceManager& deviceManager);

    /// The identifiers of the units' input ports, in JUCE's order.
    juce::StringArray listUnits();

    /// Opens an input to the first unit listed; null if there is none or it cannot be opened. The
    /// callback must outlive the input.
    std::unique_ptr<juce::MidiInput> openInput(juce::MidiInputCallback* callback);

    /// Whether one of these ports sends to an input of this process; true as well if the sequencer
    /// does not tell. The kernel drops the subscription of a unit that is unplugged, and the input
    /// stays deaf when the unit is back.
    bool isSubscribedTo(const juce::StringArray& units);

private:
    class UnusedCallback : public juce::MidiInputCallback
    {
        void handleIncomingMidiMessage(juce::MidiInput*, const juce::MidiMessage&) override {}
    };
    struct Closer {
        void operator()(snd_seq_t* handle) const { snd_seq_close(handle); }
    };

    void reconnectSequencer(bool portsListed);
    void keepInputThreadRunning();
    bool hasOurReader(const juce::String& unit) const;

    juce::AudioDeviceManager& manager;
    bool sequencerHeld = true;
    UnusedCallback unusedCallback;
    std::unique_ptr<juce::MidiInput> unusedInput;
    /// For queries. Kept open: other programs are notified of each client that comes and goes.
    std::unique_ptr<snd_seq_t, Closer> sequencer;
};
