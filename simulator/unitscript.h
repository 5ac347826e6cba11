// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "simulator/unitfault.h"

#include <juce_audio_basics/juce_audio_basics.h>

#include <vector>

/// One thing that a unit does while a control is worked.
struct UnitStep {
    enum class Action { Send, Unplug, Replug };
    Action action = Action::Send;
    juce::MidiMessage message; ///< What is sent, with Action::Send.
    double wait = 1.0;         ///< Since the step before it, in messages at the pace; 0: at once.
};

using UnitScript = std::vector<UnitStep>;

namespace unitscript
{
/// The components that a run asks for, in its order; the channel button only at a station that
/// carries the marker.
std::vector<int> runOrder(bool withChannelButton);

/// What a good control sends while it is worked: faders and rotaries report every value up and
/// down again, a button is pressed fully and released. Releases come as note-off or as note-on with
/// velocity 0, in turn from button to button. component: 0 to 43.
UnitScript good(int component);

/// What the unit sends while the operator works the component, if it has the fault.
UnitScript worked(int component, const UnitFault& unit);
} // namespace unitscript
