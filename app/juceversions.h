// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <juce_audio_devices/juce_audio_devices.h>

/// What JUCE's versions do differently about MIDI ports and sound devices. Each function does
/// nothing with the other versions, and says until when it is needed. On the GUI thread.
namespace juceversions
{
/// JUCE 9 lists the ports as they were when its own message loop, which does not run here, last
/// handled the sequencer's announcements. Handles those that wait. Needed from JUCE 9 on.
void processAnnouncements();

/// From its construction on, the device manager holds JUCE's client of the sequencer. A client that
/// was made without a sequencer never finds one, and JUCE makes no other while it is held. Only
/// with JUCE 8: can go with Debian 13.
void releaseSequencer(juce::AudioDeviceManager& manager);

/// Holds the client again. Otherwise JUCE would start and end its MIDI thread at each listing. Only
/// with JUCE 8: can go with Debian 13.
void holdSequencer(juce::AudioDeviceManager& manager);

/// How the sound device is to be opened. By itself JUCE 9 takes the lowest rate of the device,
/// which may be 8 kHz; JUCE 7 and 8 take the lowest from 44.1 kHz on, and get null. Needed from
/// JUCE 9 on.
const juce::AudioDeviceManager::AudioDeviceSetup* preferredSetup();
} // namespace juceversions
