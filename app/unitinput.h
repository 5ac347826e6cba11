// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <juce_audio_devices/juce_audio_devices.h>

#include <memory>

/// The input that listens to the unit. On Linux a unit that was gone for a moment takes the input's
/// subscription with it, and JUCE subscribes an input only when it opens one. So the input is a
/// port of the station's own there, which can be subscribed to the unit at any time. On the GUI
/// thread.
namespace unitinput
{
/// Opens the input to the unit's port of that identifier, as JUCE lists it; null if that fails.
std::unique_ptr<juce::MidiInput> open(const juce::String& unit, juce::MidiInputCallback* callback);

/// Subscribes an open input to the unit's port again, if it is subscribed to none. Without
/// ALSA nothing is done.
void keepSubscribed(const juce::MidiInput& input, const juce::String& unit);
} // namespace unitinput
