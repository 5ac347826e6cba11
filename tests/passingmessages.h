// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <juce_audio_basics/juce_audio_basics.h>

#include <QVector>

/// What makes a control pass, in as few messages as it has bands. The numbers are written out here
/// once more, from the unit's own tables, so that a wrong one in the station is found.
inline QVector<juce::MidiMessage> passingMessages(int component)
{
    if (component >= 9 && component < 40) {
        const int note = component < 18 ? component - 8 : component - 9;
        const int channel = component == 18 ? 2 : 1;
        return {{0x8F + channel, note, 127}, {0x7F + channel, note, 0}};
    }
    QVector<juce::MidiMessage> messages;
    for (int band = 0; band < 13; ++band)
        messages << juce::MidiMessage(0xB0, component < 9 ? component + 1 : component - 30,
                                      10 * band);
    return messages;
}
