// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <juce_audio_devices/juce_audio_devices.h>

/// How a unit is recognised: the name of its port, and its identity reply.
namespace unitidentity
{
/// Whether a MIDI port of this name is a unit's. Letter case counts.
bool isUnitName(const juce::String& name);

/// The identifiers of the units among the devices, in the same order.
juce::StringArray unitsIn(const juce::Array<juce::MidiDeviceInfo>& devices);

/// The identity request of MIDI 1.0 to all devices (universal non-real-time): F0 7E 7F 06 01 F7.
juce::MidiMessage identityRequest();

/// Whether a message is the unit's identity reply: system exclusive, with exactly its 11 bytes
/// between F0 and F7.
bool isIdentityReply(const juce::MidiMessage& message);
} // namespace unitidentity
