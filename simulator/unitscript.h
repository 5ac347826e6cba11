// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <juce_audio_basics/juce_audio_basics.h>

#include <vector>

/// One thing that a unit does while a control is worked.
struct UnitStep {
    enum class Action { Send, Unplug, Replug };
    Action action = Action::Send;
    juce::MidiMessage message; ///< What is sent, with Action::Send.
    double wait = 1.0;         ///< After the step before, in messages at the pace; 0: at once.
};

using UnitScript = std::vector<UnitStep>;

/// What a unit sends, piece by piece. Component numbers are 0 to 43.
namespace unitscript
{
/// The components in the order of a run; the channel button only at a TARVEK station.
std::vector<int> runOrder(bool withChannelButton);

/// What a good control sends while it is worked: faders and rotaries report every value up and
/// down again, a button is pressed fully and released.
UnitScript good(int componentNum);

/// A fader or rotary at one value, 0 to 127.
UnitStep position(int componentNum, int value);
/// A fader or rotary moved up from the lowest value to the highest and down again, 0 to 127.
UnitScript sweep(int componentNum, int lowest, int highest);
/// A button pressed with a velocity of 1 to 127.
UnitStep press(int componentNum, int velocity);
/// A button released: by note-off or by note-on with velocity 0, in turn from button to button.
UnitStep release(int componentNum);
/// A message sent that many messages after the step before.
UnitStep sent(const juce::MidiMessage& message, double wait);

/// The first script, then the second.
UnitScript joined(UnitScript first, const UnitScript& second);
} // namespace unitscript
