// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <QStringList>

#include <optional>

/// The faults that a line meets, as a simulated unit can show them.
enum class Fault {
    None,
    Stuck,       ///< A fader or rotary reports one value only, a button nothing.
    NoLowEnd,    ///< A fader or rotary never gets below 10.
    NoHighEnd,   ///< A fader or rotary never gets above 119.
    WeakButton,  ///< A button only reaches velocity 100.
    TooEarly,    ///< The next control is moved a little before this one is worked.
    Swapped,     ///< This control and the next one speak in each other's place.
    CablePulled, ///< The cable comes out in the middle of the work and goes back in.
    Chatter,     ///< A button bounces many times on each press and release.
    Flood        ///< Thousands of other messages come along at once.
};

/// A unit with one fault, or with none.
struct UnitFault {
    Fault fault = Fault::None;
    int component = -1; ///< Where the fault sits.
};

namespace unitfault
{
/// The names that the command lines take, the healthy unit's first.
QStringList names();
/// Nothing for a name that is not among them; letter case counts.
std::optional<Fault> fromName(const QString& name);

/// Whether a control of this number can show the fault.
bool applies(Fault fault, int component);
/// A component that can show the fault, for whoever did not choose one.
int usualComponent(Fault fault);

/// Whether a band of a component stays uncovered when such a unit is worked once: bands as the
/// panels count them, 13 for a fader or a rotary, 2 for a button.
bool leavesUncovered(const UnitFault& unit, int component, int band);
} // namespace unitfault
