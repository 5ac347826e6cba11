// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/support/passingmessages.h"

QVector<juce::MidiMessage> passingMessages(int component)
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
