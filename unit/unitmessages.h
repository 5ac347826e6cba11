// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "unit/componentroster.h"

/// The MIDI numbers of the components, as the unit's firmware sends them: 7-bit numbers of notes
/// and controllers, channels from 1 to 16.
namespace unitmessages
{
/// The channel that the channel button is known by. The other buttons count on every channel, this
/// one included.
inline constexpr int channelButtonChannel = 2;

/// The controller number of a fader (1 to 9) or a rotary (10 to 13): they run on without a gap.
constexpr int controllerOf(int componentNum)
{
    const int before = roster::kindOf(componentNum) == roster::Kind::Fader ? 0 : roster::faderCount;
    return before + roster::indexInKind(componentNum) + 1;
}

/// The note number of a button (1 to 30). The channel button has none, so the numbers of the
/// buttons after it are one lower.
constexpr int noteOf(int componentNum)
{
    const int note = roster::indexInKind(componentNum) + 1;
    return componentNum < roster::channelButton ? note : note - 1;
}
} // namespace unitmessages
