// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "simulator/unitscript.h"

#include "panels/componentroster.h"
#include "panels/unitmessages.h"

namespace
{
constexpr int highestValue = 127;
constexpr juce::uint8 fullPress = 127;
constexpr juce::uint8 weakPress = 100;
constexpr double noWait = 0.0;
/// For the way to a control and for a press: a tenth of a second at the usual pace.
constexpr double handWait = 20.0;

UnitStep sent(const juce::MidiMessage& message, double wait = 1.0)
{
    return {UnitStep::Action::Send, message, wait};
}

bool isButton(int component)
{
    return roster::kindOf(component) == roster::Kind::Button;
}

UnitStep position(int component, int value)
{
    return sent(
        juce::MidiMessage::controllerEvent(1, unitmessages::controllerOf(component), value));
}

/// Up from lowest to highest and down again.
UnitScript sweep(int component, int lowest, int highest)
{
    UnitScript script;
    for (int value = lowest; value <= highest; ++value)
        script.push_back(position(component, value));
    for (int value = highest; value >= lowest; --value)
        script.push_back(position(component, value));
    script.front().wait = handWait;
    return script;
}

int channelOf(int button)
{
    return button == roster::channelButton ? unitmessages::channelButtonChannel : 1;
}

/// The channel button is known by its channel; its note belongs to no other button.
int noteNumberOf(int button)
{
    return button == roster::channelButton ? 0 : unitmessages::noteOf(button);
}

UnitStep press(int button, juce::uint8 velocity)
{
    return sent(juce::MidiMessage::noteOn(channelOf(button), noteNumberOf(button), velocity),
                handWait);
}

UnitStep release(int button)
{
    const int channel = channelOf(button);
    const int note = noteNumberOf(button);
    if (button % 2 == 0)
        return sent(juce::MidiMessage::noteOn(channel, note, juce::uint8{0}), handWait);
    return sent(juce::MidiMessage::noteOff(channel, note, juce::uint8{0}), handWait);
}

UnitScript stuck(int component)
{
    if (isButton(component))
        return {};
    constexpr int stuckValue = 64;
    return UnitScript(20, position(component, stuckValue));
}

/// Moved just a little: what the hand that is too early does before it is called back.
UnitScript touched(int component)
{
    UnitScript script = unitscript::good(component);
    constexpr std::size_t few = 5;
    if (script.size() > few)
        script.resize(few);
    return script;
}

UnitScript joined(UnitScript first, const UnitScript& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

/// Half of the way up (a button: pressed, not released), then the cable, then all of it anew.
UnitScript cablePulled(int component)
{
    UnitScript script = unitscript::good(component);
    script.resize(isButton(component) ? 1 : script.size() / 4);
    script.push_back({UnitStep::Action::Unplug, {}});
    script.push_back({UnitStep::Action::Replug, {}});
    return joined(std::move(script), unitscript::good(component));
}

UnitScript chattering(int button)
{
    constexpr int bounces = 20;
    UnitScript script;
    for (int i = 0; i < bounces; ++i) {
        script.push_back(press(button, fullPress));
        script.push_back(release(button));
        script.back().wait = noWait;
    }
    return script;
}

/// Everything that is not a component's: pressure, pitch bend, programs, clock and the controllers
/// behind the last rotary's.
UnitScript flood()
{
    constexpr int rounds = 1000;
    constexpr int foreignController = 100;
    UnitScript script;
    for (int i = 0; i < rounds; ++i) {
        const int value = i % (highestValue + 1);
        script.push_back(sent(juce::MidiMessage::channelPressureChange(1, value), noWait));
        script.push_back(sent(juce::MidiMessage::pitchWheel(1, value), noWait));
        script.push_back(sent(juce::MidiMessage::programChange(1, value), noWait));
        script.push_back(sent(juce::MidiMessage::midiClock(), noWait));
        script.push_back(
            sent(juce::MidiMessage::controllerEvent(1, foreignController, value), noWait));
    }
    return script;
}
} // namespace

std::vector<int> unitscript::runOrder(bool withChannelButton)
{
    std::vector<int> order;
    for (int component = roster::firstComponent; component <= roster::lastComponent; ++component)
        if (component != roster::powerButton &&
            (withChannelButton || component != roster::channelButton))
            order.push_back(component);
    return order;
}

UnitScript unitscript::good(int component)
{
    if (isButton(component))
        return {press(component, fullPress), release(component)};
    return sweep(component, 0, highestValue);
}

UnitScript unitscript::worked(int component, const UnitFault& unit)
{
    if (unit.fault == Fault::Swapped && component == unit.component + 1)
        return good(unit.component);
    if (component != unit.component)
        return good(component);

    switch (unit.fault) {
    case Fault::None:
        break;
    case Fault::Stuck:
        return stuck(component);
    case Fault::NoLowEnd:
        return sweep(component, 10, highestValue);
    case Fault::NoHighEnd:
        return sweep(component, 0, 119);
    case Fault::WeakButton:
        return {press(component, weakPress), release(component)};
    case Fault::TooEarly:
        return joined(touched(component + 1), good(component));
    case Fault::Swapped:
        return good(component + 1);
    case Fault::CablePulled:
        return cablePulled(component);
    case Fault::Chatter:
        return chattering(component);
    case Fault::Flood:
        return joined(flood(), good(component));
    }
    return good(component);
}
