// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "simulator/unitscript.h"

#include "unit/unitmessages.h"
#include "unit/valuebands.h"

using valuebands::highestValue;

namespace
{
/// The way to a control, and a press: a tenth of a second at the default pace.
constexpr double handWait = 20.0;

int channelOf(int button)
{
    return button == roster::channelButton ? unitmessages::channelButtonChannel : 1;
}

/// The channel button is recognised by its channel; no other button has its note.
int noteNumberOf(int button)
{
    return button == roster::channelButton ? 0 : unitmessages::noteOf(button);
}
} // namespace

std::vector<int> unitscript::runOrder(bool withChannelButton)
{
    std::vector<int> order;
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c)
        if (c != roster::powerButton && (withChannelButton || c != roster::channelButton))
            order.push_back(c);
    return order;
}

UnitScript unitscript::good(int componentNum)
{
    if (roster::kindOf(componentNum) == roster::Kind::Button)
        return {press(componentNum, highestValue), release(componentNum)};
    return sweep(componentNum, 0, highestValue);
}

UnitStep unitscript::position(int componentNum, int value)
{
    const int controller = unitmessages::controllerOf(componentNum);
    return sent(juce::MidiMessage::controllerEvent(1, controller, value), 1.0);
}

UnitScript unitscript::sweep(int componentNum, int lowest, int highest)
{
    UnitScript script;
    for (int value = lowest; value <= highest; ++value)
        script.push_back(position(componentNum, value));
    for (int value = highest; value >= lowest; --value)
        script.push_back(position(componentNum, value));
    script.front().wait = handWait;
    return script;
}

UnitStep unitscript::press(int componentNum, int velocity)
{
    return sent(juce::MidiMessage::noteOn(channelOf(componentNum), noteNumberOf(componentNum),
                                          static_cast<juce::uint8>(velocity)),
                handWait);
}

UnitStep unitscript::release(int componentNum)
{
    const int channel = channelOf(componentNum);
    const int note = noteNumberOf(componentNum);
    if (componentNum % 2 == 0)
        return sent(juce::MidiMessage::noteOn(channel, note, juce::uint8{0}), handWait);
    return sent(juce::MidiMessage::noteOff(channel, note, juce::uint8{0}), handWait);
}

UnitStep unitscript::sent(const juce::MidiMessage& message, double wait)
{
    return {UnitStep::Action::Send, message, wait};
}

UnitScript unitscript::joined(UnitScript first, const UnitScript& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}
