// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "simulator/unitscript.h"

#include <QString>
#include <QStringList>

#include <optional>

/// The faults of real units that a simulated unit can show.
enum class Fault {
    None,
    Stuck,       ///< A fader or rotary reports one value only, a button nothing.
    NoLowEnd,    ///< A fader or rotary never gets below 10.
    NoHighEnd,   ///< A fader or rotary never gets above 119.
    WeakButton,  ///< A button only reaches velocity 100.
    TooEarly,    ///< The next control is moved a little before this one is worked.
    Swapped,     ///< This control and the next one send each other's messages.
    CablePulled, ///< The cable is pulled in the middle of the work and put back.
    Chatter,     ///< A button bounces many times on each press and release.
    Flood        ///< Thousands of messages of no component come first.
};

/// A unit with one fault, or with none.
struct UnitFault {
    Fault fault = Fault::None;
    int componentNum = -1; ///< The component that has the fault.
};

namespace unitfault
{
/// The names for command lines; the healthy unit's is the first.
QStringList names();
/// The fault of a name, letter case included; nothing for an unknown name.
std::optional<Fault> fromName(const QString& name);

/// Whether this component can have the fault; false for a number outside 0 to 43.
bool applies(Fault fault, int componentNum);
/// Default component for the fault.
int defaultComponent(Fault fault);

/// What the unit sends while the operator works this component, 0 to 43.
UnitScript scriptFor(int componentNum, const UnitFault& unit);
} // namespace unitfault
