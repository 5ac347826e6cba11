// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <juce_audio_basics/juce_audio_basics.h>

/// A synthesiser whose notes sound in layers: every sound that answers a note is played.
/// juce::Synthesiser (7, 8 and 9) stops the voices of a note before each sound that it starts, and
/// takes the oldest voice of that note when all are busy. Both would end the layer that the same
/// note-on has just started. Here the voices are stopped once, before the first layer, and a
/// note-on never takes a voice that it started itself.
class LayeredSynthesiser : public juce::Synthesiser
{
public:
    /// Channel 1 to 16, note 0 to 127, velocity 0 to 1. Called on the audio thread.
    void noteOn(int midiChannel, int midiNoteNumber, float velocity) override;

protected:
    /// The library's choice, without the voices of the note-on that is starting: the oldest voice
    /// of the note; if there is none, the oldest one, and one of the lowest and one of the highest
    /// note last. A stopped voice counts as any other until its sample ends. The library's own
    /// function allocates memory.
    juce::SynthesiserVoice* findVoiceToSteal(juce::SynthesiserSound* sound, int midiChannel,
                                             int midiNoteNumber) const override;

private:
    const juce::SynthesiserVoice* firstLayer = nullptr; ///< Of the note-on that is starting.
};
