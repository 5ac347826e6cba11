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

juce::SynthesiserVoice* LayeredSynthesiser::findVoiceToSteal(juce::SynthesiserSound*, int,
                                                             int midiNoteNumber) const
{
    const auto isOfThisRequest = [this](const juce::SynthesiserVoice& voice) {
        return firstLayer != nullptr && !voice.wasStartedBefore(*firstLayer);
    };
    const juce::SynthesiserVoice* lowest = nullptr;
    const juce::SynthesiserVoice* highest = nullptr;
    for (const auto* voice : voices) {
        if (isOfThisRequest(*voice))
            continue;
        const int note = voice->getCurrentlyPlayingNote();
        if (lowest == nullptr || note < lowest->getCurrentlyPlayingNote())
            lowest = voice;
        if (highest == nullptr || note > highest->getCurrentlyPlayingNote())
            highest = voice;
    }

    const auto isBetter = [&](const juce::SynthesiserVoice& a, const juce::SynthesiserVoice& b) {
        const auto rank = [&](const juce::SynthesiserVoice& voice) {
            if (voice.getCurrentlyPlayingNote() == midiNoteNumber)
                return 0;
            return &voice == lowest ? 3 : &voice == highest ? 2 : 1;
        };
        return rank(a) != rank(b) ? rank(a) < rank(b) : a.wasStartedBefore(b);
    };
    juce::SynthesiserVoice* best = nullptr;
    for (auto* voice : voices)
        if (!isOfThisRequest(*voice) && (best == nullptr || isBetter(*voice, *best)))
            best = voice;
    return best;
}
