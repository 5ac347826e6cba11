// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "audio/layeredsynthesiser.h"

#include <algorithm>

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

juce::SynthesiserVoice* LayeredSynthesiser::findVoiceToSteal(juce::SynthesiserSound*, int,
                                                             int midiNoteNumber) const
{
    const auto hasLowerNote = [](const auto* a, const auto* b) {
        return a->getCurrentlyPlayingNote() < b->getCurrentlyPlayingNote();
    };
    const auto* lowest = *std::min_element(voices.begin(), voices.end(), hasLowerNote);
    const auto* highest = *std::max_element(voices.begin(), voices.end(), hasLowerNote);
    enum Preference { SameNote, AnyOther, LowestOrHighest };
    const auto preferenceOf = [&](const juce::SynthesiserVoice* voice) {
        if (voice->getCurrentlyPlayingNote() == midiNoteNumber)
            return SameNote;
        return voice == lowest || voice == highest ? LowestOrHighest : AnyOther;
    };

    juce::SynthesiserVoice* chosen = nullptr;
    for (auto* voice : voices) {
        if (firstLayer != nullptr && !voice->wasStartedBefore(*firstLayer))
            continue;
        if (chosen == nullptr || preferenceOf(voice) < preferenceOf(chosen) ||
            (preferenceOf(voice) == preferenceOf(chosen) && voice->wasStartedBefore(*chosen)))
            chosen = voice;
    }
    return chosen;
}
