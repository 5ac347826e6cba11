// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <juce_audio_devices/juce_audio_devices.h>

/// Lets JUCE 8 find an ALSA sequencer that appears after the station was started; to be called at
/// each listing of the MIDI inputs, on the GUI thread. portsListed: whether there was any, the
/// system's own included.
///
/// From its construction on, the device manager holds JUCE's client of the sequencer. A client that
/// was made without a sequencer never finds one, and JUCE makes no other while it is held. It is
/// released while no port is listed, and held again from then on, as JUCE would otherwise start and
/// end its MIDI thread at each listing. JUCE 7 holds none: nothing is done there, nor without ALSA.
void followSequencer(juce::AudioDeviceManager& manager, bool portsListed);
