// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "audio/layeredsynthesiser.h"

void LayeredSynthesiser::noteOn(int midiChannel, int midiNoteNumber, float velocity)
{
    const juce::ScopedLock sl(lock);

    for (auto* voice : voices)
        if (voice->getCurrentlyPlayingNote() == midiNoteNumber &&
            voice->isPlayingChannel(midiChannel))
            stopVoice(voice, 1.0F, true);

    firstLayer = nullptr;
    for (auto* sound : sounds) {
        if (!sound->appliesToNote(midiNoteNumber) || !sound->appliesToChannel(midiChannel))
            continue;
        auto* voice = findFreeVoice(sound, midiChannel, midiNoteNumber, isNoteStealingEnabled());
        startVoice(voice, sound, midiChannel, midiNoteNumber, velocity);
        if (firstLayer == nullptr)
            firstLayer = voice;
    }
}

juce::SynthesiserVoice* LayeredSynthesiser::findVoiceToSteal(juce::SynthesiserSound* sound,
                                                             int midiChannel,
                                                             int midiNoteNumber) const
{
    auto* voice = Synthesiser::findVoiceToSteal(sound, midiChannel, midiNoteNumber);
    if (voice == nullptr || firstLayer == nullptr || voice->wasStartedBefore(*firstLayer))
        return voice;
    // The library prefers the note's oldest voice, and this request has started that. For a note
    // that no voice plays it chooses the oldest one; but for the lowest and the highest note, which
    // it takes last. The layers of this request are the youngest.
    constexpr int noNote = -1;
    return Synthesiser::findVoiceToSteal(sound, midiChannel, noNote);
}
