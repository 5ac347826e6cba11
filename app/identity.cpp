// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/identity.h"

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

juce::MidiMessage identity::request()
{
    // Universal non-real-time, all devices, general information, identity request.
    constexpr std::array<juce::uint8, 4> body{0x7E, 0x7F, 0x06, 0x01};
    return juce::MidiMessage::createSysExMessage(body.data(), static_cast<int>(body.size()));
}

bool identity::isReply(const juce::MidiMessage& message)
{
    return message.isSysEx() && message.getSysExDataSize() == static_cast<int>(replyBody.size()) &&
           std::equal(replyBody.begin(), replyBody.end(), message.getSysExData());
}
