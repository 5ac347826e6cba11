// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/sequencerhold.h"

#if JUCE_LINUX && JUCE_MAJOR_VERSION == 8
namespace
{
using juce::AudioDeviceManager;
using juce::MidiDeviceListConnection;

MidiDeviceListConnection& connectionOf(AudioDeviceManager& manager);

// The connection is private, and the manager has no function to renew it. An explicit instantiation
// may name a private member: if a later JUCE has no such member, this does not compile.
template <auto member>
struct Access {
    friend MidiDeviceListConnection& connectionOf(AudioDeviceManager& manager)
    {
        return manager.*member;
    }
};
template struct Access<&AudioDeviceManager::midiDeviceListConnection>;
} // namespace

void followSequencer(juce::AudioDeviceManager& manager, bool portsListed)
{
    static bool released = false;
    auto& connection = connectionOf(manager);
    if (!portsListed) {
        connection.reset();
        released = true;
    } else if (released) {
        // Without a function to call: the station lists the ports itself.
        connection = MidiDeviceListConnection::make(nullptr);
        released = false;
    }
}
#else
void followSequencer(juce::AudioDeviceManager&, bool) {}
#endif
