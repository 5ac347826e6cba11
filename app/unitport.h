// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <juce_audio_devices/juce_audio_devices.h>

#include <memory>

/// The unit's MIDI port among those that the system lists.
namespace unitport
{
/// Whether a listed port name is the unit's. Letter case counts.
bool isUnitName(const juce::String& name);

/// The identifier of the first port of the unit in the list; empty if there is none.
juce::String identifierIn(const juce::Array<juce::MidiDeviceInfo>& devices);

/// An input that nobody speaks to, which keeps JUCE's MIDI input thread running while it exists.
/// That thread takes up to 100 ms to end after the last input was stopped: whoever closes an input
/// in that time waits for it, and an input started in that time hears nothing, ever. Null where the
/// system has no virtual ports or needs none.
std::unique_ptr<juce::MidiInput> keepInputThreadRunning();
} // namespace unitport
