// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "unit/componentroster.h"

/// The value bands of the controls: a control passes once it has reached each band of its kind.
/// Values are 7-bit: controller values of faders and rotaries, velocities of buttons.
namespace valuebands
{
inline constexpr int highestValue = 127;

/// A band's lowest and highest value, both inclusive.
struct Band {
    int min;
    int max;
};

/// How many bands a control of this kind has.
constexpr int count(roster::Kind kind)
{
    return kind == roster::Kind::Button ? 2 : 13;
}

/// A band of a kind; index from 0 to count - 1. A button's bands are released and fully pressed;
/// those of a fader or rotary are tens from 0. The last of these ends at 129, above the highest
/// value, so that every value from 120 on is in it.
constexpr Band band(roster::Kind kind, int index)
{
    if (kind == roster::Kind::Button)
        return index == 0 ? Band{0, 0} : Band{highestValue, highestValue};
    constexpr int width = 10;
    return {width * index, width * index + width - 1};
}
} // namespace valuebands
