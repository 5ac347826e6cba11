// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "simulator/unitfault.h"

#include "unit/valuebands.h"

#include <algorithm>
#include <array>

using valuebands::highestValue;

namespace
{
constexpr double noWait = 0.0;

bool isButton(int componentNum)
{
    return roster::kindOf(componentNum) == roster::Kind::Button;
}

bool isTested(int componentNum)
{
    return componentNum >= roster::firstComponent && componentNum <= roster::lastComponent &&
           componentNum != roster::powerButton;
}

// Which components can have a fault.

bool anyControl(int)
{
    return true;
}

bool movingControl(int componentNum)
{
    return !isButton(componentNum);
}

bool nextIsTested(int componentNum)
{
    return isTested(componentNum + 1);
}

/// Only with the next control of the same kind, and not with the channel button: many stations do
/// not test it.
bool canSwapWithNext(int componentNum)
{
    return nextIsTested(componentNum) &&
           roster::kindOf(componentNum) == roster::kindOf(componentNum + 1) &&
           componentNum != roster::channelButton && componentNum + 1 != roster::channelButton;
}

// What the faulty control sends.

UnitScript stuck(int componentNum)
{
    if (isButton(componentNum))
        return {};
    constexpr int stuckValue = 64;
    return UnitScript(20, unitscript::position(componentNum, stuckValue));
}

UnitScript noLowEnd(int componentNum)
{
    return unitscript::sweep(componentNum, 10, highestValue);
}

UnitScript noHighEnd(int componentNum)
{
    return unitscript::sweep(componentNum, 0, 119);
}

UnitScript weakButton(int componentNum)
{
    constexpr int weakVelocity = 100;
    return {unitscript::press(componentNum, weakVelocity), unitscript::release(componentNum)};
}

/// The next control is moved by a few values only: then the operator notices.
UnitScript tooEarly(int componentNum)
{
    UnitScript touched = unitscript::good(componentNum + 1);
    constexpr std::size_t fewSteps = 5;
    if (touched.size() > fewSteps)
        touched.resize(fewSteps);
    return unitscript::joined(std::move(touched), unitscript::good(componentNum));
}

UnitScript asNext(int componentNum)
{
    return unitscript::good(componentNum + 1);
}

UnitScript asPrevious(int componentNum)
{
    return unitscript::good(componentNum - 1);
}

/// Half of the way up, or a button pressed and not released; then the cable; then all of it again.
UnitScript cablePulled(int componentNum)
{
    UnitScript script = unitscript::good(componentNum);
    script.resize(isButton(componentNum) ? 1 : script.size() / 4);
    script.push_back({UnitStep::Action::Unplug, {}});
    script.push_back({UnitStep::Action::Replug, {}});
    return unitscript::joined(std::move(script), unitscript::good(componentNum));
}

UnitScript chatter(int componentNum)
{
    constexpr int bounces = 20;
    UnitScript script;
    for (int i = 0; i < bounces; ++i) {
        script.push_back(unitscript::press(componentNum, highestValue));
        script.push_back(unitscript::release(componentNum));
        script.back().wait = noWait;
    }
    return script;
}

/// Messages of no component: pressure, pitch bend, programs, clock and a controller above those of
/// the rotaries.
UnitScript flood(int componentNum)
{
    constexpr int rounds = 1000;
    constexpr int foreignController = 100;
    UnitScript script;
    for (int i = 0; i < rounds; ++i) {
        const int value = i % (highestValue + 1);
        for (const auto& message :
             {juce::MidiMessage::channelPressureChange(1, value),
              juce::MidiMessage::pitchWheel(1, value), juce::MidiMessage::programChange(1, value),
              juce::MidiMessage::midiClock(),
              juce::MidiMessage::controllerEvent(1, foreignController, value)})
            script.push_back(unitscript::sent(message, noWait));
    }
    return unitscript::joined(std::move(script), unitscript::good(componentNum));
}

/// Everything about a fault.
struct FaultRow {
    Fault fault;
    const char* name;
    int defaultComponent;
    bool (*applies)(int componentNum);
    UnitScript (*script)(int componentNum); ///< Of the component with the fault.
    UnitScript (*nextScript)(int componentNum) = unitscript::good; ///< Of the component after it.
};

constexpr std::array<FaultRow, 10> faults{{
    {Fault::None, "none", roster::firstFader, anyControl, unitscript::good},
    {Fault::Stuck, "stuck", roster::firstFader + 3, anyControl, stuck},
    {Fault::NoLowEnd, "no-low-end", roster::firstFader + 2, movingControl, noLowEnd},
    {Fault::NoHighEnd, "no-high-end", roster::firstRotary + 1, movingControl, noHighEnd},
    {Fault::WeakButton, "weak-button", roster::firstButton + 2, isButton, weakButton},
    {Fault::TooEarly, "too-early", roster::firstFader + 4, nextIsTested, tooEarly},
    {Fault::Swapped, "swapped", roster::firstFader + 5, canSwapWithNext, asNext, asPrevious},
    {Fault::CablePulled, "cable-pulled", roster::firstFader + 1, anyControl, cablePulled},
    {Fault::Chatter, "chatter", roster::firstButton + 5, isButton, chatter},
    {Fault::Flood, "flood", roster::firstFader + 6, anyControl, flood},
}};

const FaultRow& rowOf(Fault fault)
{
    return *std::find_if(faults.begin(), faults.end(),
                         [fault](const FaultRow& row) { return row.fault == fault; });
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

bool unitfault::applies(Fault fault, int componentNum)
{
    return isTested(componentNum) && rowOf(fault).applies(componentNum);
}

int unitfault::defaultComponent(Fault fault)
{
    return rowOf(fault).defaultComponent;
}

UnitScript unitfault::scriptFor(int componentNum, const UnitFault& unit)
{
    const FaultRow& row = rowOf(unit.fault);
    if (componentNum == unit.componentNum)
        return row.script(componentNum);
    if (componentNum == unit.componentNum + 1)
        return row.nextScript(componentNum);
    return unitscript::good(componentNum);
}
