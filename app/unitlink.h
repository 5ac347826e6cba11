// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <juce_audio_devices/juce_audio_devices.h>

/// The MIDI link to the unit: its port, its identity, and JUCE's thread that listens to it.
namespace unitlink
{
/// Whether a MIDI port of this name is a unit's. Letter case counts.
bool isUnitName(const juce::String& name);

/// The identifier of the first unit among the devices; empty if there is none.
juce::String identifierIn(const juce::Array<juce::MidiDeviceInfo>& devices);

/// The identity request of MIDI 1.0 to all devices (universal non-real-time): F0 7E 7F 06 01 F7.
juce::MidiMessage identityRequest();

/// Whether a message is the unit's identity reply: system exclusive, with exactly its 11 bytes
/// between F0 and F7.
bool isIdentityReply(const juce::MidiMessage& message);

/// Lets JUCE 9 take in which ports came and went. It lists the ports as they were when it last
/// handled the sequencer's announcements, and leaves that to its own message loop, which does not
/// run here. JUCE 7 and 8 ask the sequencer at each listing: nothing is done there. On the GUI
/// thread.
void takeInAnnouncements();

/// Keeps one unused MIDI input open until the process ends: JUCE 7 needs up to 100 ms to stop its
/// input thread, and an input opened in that time receives nothing. JUCE 8 does not need it. Does
/// nothing where the system has no MIDI yet. May be called again; on the GUI thread.
void keepInputThreadRunning();
} // namespace unitlink
