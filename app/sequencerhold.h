// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <juce_audio_devices/juce_audio_devices.h>

/// Makes JUCE 8 look for the ALSA sequencer again; to be called on the GUI thread when not a single
/// MIDI port is listed. From its construction on, the device manager holds JUCE's client of the
/// sequencer. A client that was made while there was no sequencer never finds one, and no other is
/// made while it is held. JUCE 7 holds none between two listings: nothing is done there, nor on
/// systems without ALSA.
void reopenSequencer(juce::AudioDeviceManager& manager);
