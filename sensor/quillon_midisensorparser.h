// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <juce_audio_utils/juce_audio_utils.h>

#include <QObject>

class Quillon_MIDISensorParserDriver;

using juce::AudioProcessorPlayer;

/// The start of the toolkit's message path: a player whose processor, the driver, gives every MIDI
/// message of each audio block to the parser, on the audio device's thread. It works when it is
/// registered with an audio device and a MIDI input; the station registers it with neither.
class Quillon_MIDISensorParser : public QObject, public AudioProcessorPlayer
{
    Q_OBJECT

public:
    explicit Quillon_MIDISensorParser(QObject* parent);
    ~Quillon_MIDISensorParser() override;

    /// Called for every message of a block, in order, on the audio device's thread.
    virtual void parseMIDIMessage(const juce::MidiMessage& midiMessage) = 0;

private:
    Quillon_MIDISensorParserDriver* driver; // a child; QObject deletes it after the player
};
