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

/// Keeps JUCE's MIDI input thread running until the process ends, with an input of its own that
/// nobody speaks to. That thread takes up to 100 ms to end after the last input was stopped:
/// whoever closes an input in that time waits for it, and an input started in that time hears
/// nothing, ever. Does nothing where the system has no virtual ports, or no MIDI yet.
void keepInputThreadRunning();
} // namespace unitport
