// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/unitport.h"

bool unitport::isUnitName(const juce::String& name)
{
#if JUCE_LINUX
    // The kernel puts a suffix behind the product string of a USB unit (seen with kernel 6.1).
    if (name == "Zorvi_Control MIDI 1")
        return true;
#endif
    return name == "Zorvi_Control";
}

juce::String unitport::identifierIn(const juce::Array<juce::MidiDeviceInfo>& devices)
{
    for (const auto& device : devices)
        if (isUnitName(device.name))
            return device.identifier;
    return {};
}
