// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <juce_audio_basics/juce_audio_basics.h>

/// A synthesiser whose notes sound in layers: every sound that answers a note is heard.
/// juce::Synthesiser (7.0.5 and 8.0.6) stops the voices on a note before each sound that it starts,
/// the layer it started a moment ago included; here they are stopped once, before the first one.
class LayeredSynthesiser : public juce::Synthesiser
{
public:
    /// Channel 1 to 16, note 0 to 127, velocity 0 to 1. Called on the audio thread.
    void noteOn(int midiChannel, int midiNoteNumber, float velocity) override;
};
