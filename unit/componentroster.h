// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

/// The components of a unit and their numbers, 0 to 43: the number of a component is its name in
/// every signal and in the log.
namespace roster
{
enum class Kind { Fader, Button, Rotary };

inline constexpr int componentCount = 44;
inline constexpr int firstComponent = 0;
inline constexpr int lastComponent = 43;

inline constexpr int firstFader = firstComponent;
inline constexpr int faderCount = 9;
inline constexpr int firstButton = 9;
inline constexpr int buttonCount = 31;
inline constexpr int firstRotary = 40;
inline constexpr int rotaryCount = 4;

/// Recognised by its MIDI channel, not by a note; tested only at a TARVEK station.
inline constexpr int channelButton = 18;
/// The last button that a run tests.
inline constexpr int lastTestedButton = 38;
/// The power button, which no run tests.
inline constexpr int powerButton = 39;

/// The kind of a component, 0 to 43.
constexpr Kind kindOf(int componentNum)
{
    if (componentNum < firstButton)
        return Kind::Fader;
    return componentNum < firstRotary ? Kind::Button : Kind::Rotary;
}

/// The index of a component in its kind, from 0.
constexpr int indexInKind(int componentNum)
{
    switch (kindOf(componentNum)) {
    case Kind::Fader:
        return componentNum - firstFader;
    case Kind::Button:
        return componentNum - firstButton;
    case Kind::Rotary:
        break;
    }
    return componentNum - firstRotary;
}
} // namespace roster
