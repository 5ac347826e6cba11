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

    for (auto* sound : sounds)
        if (sound->appliesToNote(midiNoteNumber) && sound->appliesToChannel(midiChannel))
            startVoice(findFreeVoice(sound, midiChannel, midiNoteNumber, isNoteStealingEnabled()),
                       sound, midiChannel, midiNoteNumber, velocity);
}
