// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/unitidentity.h"

#include <algorithm>
#include <array>

namespace
{
constexpr std::array<juce::uint8, 11> replyBody{
    0x7E,             // universal non-real-time
    0x00,             // device ID 0
    0x06, 0x02,       // general information, identity reply
    0x00, 0x7E, 0x55, // the maker's ID
    0x23,             // device family, low byte
    0x00, 0x00, 0x00, // the remaining bytes, all zero
};
} // namespace

bool unitidentity::isUnitName(const juce::String& name)
{
#if JUCE_LINUX
    // The kernel adds a suffix to the product string of a USB unit (seen with 6.1 and 6.12).
    if (name == "Zorvi_Control MIDI 1")
        return true;
#endif
    return name == "Zorvi_Control";
}

juce::StringArray unitidentity::unitsIn(const juce::Array<juce::MidiDeviceInfo>& devices)
{
    juce::StringArray units;
    for (const auto& device : devices)
        if (isUnitName(device.name))
            units.add(device.identifier);
    return units;
}

juce::MidiMessage unitidentity::identityRequest()
{
    // Universal non-real-time, all devices, general information, identity request.
    constexpr std::array<juce::uint8, 4> body{0x7E, 0x7F, 0x06, 0x01};
    return juce::MidiMessage::createSysExMessage(body.data(), static_cast<int>(body.size()));
}

bool unitidentity::isIdentityReply(const juce::MidiMessage& message)
{
    return message.isSysEx() && message.getSysExDataSize() == static_cast<int>(replyBody.size()) &&
           std::equal(replyBody.begin(), replyBody.end(), message.getSysExData());
}
