// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/sequencerhold.h"

#if JUCE_LINUX && JUCE_MAJOR_VERSION >= 8
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

void reopenSequencer(juce::AudioDeviceManager& manager)
{
    // First let the old client go: what is made while it is held is given the same one. The manager
    // is not to hear of new ports, as it opens none.
    auto& connection = connectionOf(manager);
    connection.reset();
    connection = MidiDeviceListConnection::make(nullptr);
}
#else
void reopenSequencer(juce::AudioDeviceManager&) {}
#endif
