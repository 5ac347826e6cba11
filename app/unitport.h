// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <juce_audio_devices/juce_audio_devices.h>

/// The unit's MIDI port among those that the system lists.
namespace unitport
{
/// Whether a listed port name is the unit's. Letter case counts.
bool isUnitName(const juce::String& name);

/// The identifier of the first port of the unit in the list; empty if there is none.
juce::String identifierIn(const juce::Array<juce::MidiDeviceInfo>& devices);
} // namespace unitport
