// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <juce_audio_basics/juce_audio_basics.h>

/// The universal non-real-time identity exchange of MIDI 1.0, as this unit speaks it.
namespace identity
{
/// The request, to all devices: F0 7E 7F 06 01 F7.
juce::MidiMessage request();

/// Whether a system exclusive message is the unit's identity reply: exactly 11 bytes between F0
/// and F7, every one of them compared. Any other message is not.
bool isReply(const juce::MidiMessage& message);
} // namespace identity
