// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "simulator/unitfault.h"

#include "panels/componentroster.h"

#include <algorithm>
#include <array>

namespace
{
struct FaultRow {
    Fault fault;
    const char* name;
    int usualComponent;
};

constexpr std::array<FaultRow, 10> faults{{
    {Fault::None, "none", roster::firstFader},
    {Fault::Stuck, "stuck", roster::firstFader + 3},
    {Fault::NoLowEnd, "no-low-end", roster::firstFader + 2},
    {Fault::NoHighEnd, "no-high-end", roster::firstRotary + 1},
    {Fault::WeakButton, "weak-button", roster::firstButton + 2},
    {Fault::TooEarly, "too-early", roster::firstFader + 4},
    {Fault::Swapped, "swapped", roster::firstFader + 5},
    {Fault::CablePulled, "cable-pulled", roster::firstFader + 1},
    {Fault::Chatter, "chatter", roster::firstButton + 5},
    {Fault::Flood, "flood", roster::firstFader + 6},
}};

bool isTested(int component)
{
    return component >= roster::firstComponent && component <= roster::lastComponent &&
           component != roster::powerButton;
}

/// The channel button takes no part in a swap: many stations do not test it.
bool canSwapWithNext(int component)
{
    return roster::kindOf(component) == roster::kindOf(component + 1) &&
           component != roster::channelButton && component + 1 != roster::channelButton;
}
} // namespace

QStringList unitfault::names()
{
    QStringList list;
    for (const FaultRow& row : faults)
        list << QString::fromLatin1(row.name);
    return list;
}

std::optional<Fault> unitfault::fromName(const QString& name)
{
    for (const FaultRow& row : faults)
        if (name == QLatin1String(row.name))
            return row.fault;
    return std::nullopt;
}

bool unitfault::applies(Fault fault, int component)
{
    if (!isTested(component))
        return false;
    const bool isButton = roster::kindOf(component) == roster::Kind::Button;
    switch (fault) {
    case Fault::NoLowEnd:
    case Fault::NoHighEnd:
        return !isButton;
    case Fault::WeakButton:
    case Fault::Chatter:
        return isButton;
    case Fault::TooEarly:
        return isTested(component + 1);
    case Fault::Swapped:
        return isTested(component + 1) && canSwapWithNext(component);
    case Fault::None:
    case Fault::Stuck:
    case Fault::CablePulled:
    case Fault::Flood:
        break;
    }
    return true;
}

int unitfault::usualComponent(Fault fault)
{
    const auto* const row = std::find_if(faults.begin(), faults.end(),
                                         [fault](const FaultRow& r) { return r.fault == fault; });
    return row->usualComponent;
}

bool unitfault::leavesUncovered(const UnitFault& unit, int component, int band)
{
    const bool isSecondOfSwap = unit.fault == Fault::Swapped && component == unit.component + 1;
    if (component != unit.component && !isSecondOfSwap)
        return false;
    constexpr int bandOfStuckValue = 6;
    constexpr int lastPositionBand = 12;
    constexpr int fullPressBand = 1;
    switch (unit.fault) {
    case Fault::Stuck:
        return roster::kindOf(component) == roster::Kind::Button || band != bandOfStuckValue;
    case Fault::NoLowEnd:
        return band == 0;
    case Fault::NoHighEnd:
        return band == lastPositionBand;
    case Fault::WeakButton:
        return band == fullPressBand;
    case Fault::Swapped:
        return true;
    case Fault::None:
    case Fault::TooEarly:
    case Fault::CablePulled:
    case Fault::Chatter:
    case Fault::Flood:
        break;
    }
    return false;
}
