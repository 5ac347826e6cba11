// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "panels/componentroster.h"

/// Which of the unit's MIDI messages belongs to which component, as the unit's firmware numbers
/// them. Numbers are the 7-bit ones of the MIDI message, channels run from 1 to 16.
namespace unitmessages
{
/// The channel that the channel button is known by. The other buttons count on every channel, this
/// one included.
inline constexpr int channelButtonChannel = 2;

/// The controller number of a fader (1 to 9) or a rotary (10 to 13): they run on without a gap.
constexpr int controllerOf(int component)
{
    const int before = roster::kindOf(component) == roster::Kind::Fader ? 0 : roster::faderCount;
    return before + roster::indexInKind(component) + 1;
}

/// The note number of a button (1 to 30); the channel button has none, so the notes of the
/// buttons behind it close up.
constexpr int noteOf(int button)
{
    const int note = roster::indexInKind(button) + 1;
    return button < roster::channelButton ? note : note - 1;
}
} // namespace unitmessages
