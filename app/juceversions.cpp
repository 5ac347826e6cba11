// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/juceversions.h"

#if JUCE_MAJOR_VERSION >= 9
#include <juce_events/native/juce_EventLoopInternal_linux.h>

void juceversions::processAnnouncements()
{
    using juce::LinuxEventLoopInternal;
    for (const int fd : LinuxEventLoopInternal::getRegisteredFds())
        LinuxEventLoopInternal::invokeEventLoopCallbackForFd(fd);
}

const juce::AudioDeviceManager::AudioDeviceSetup* juceversions::preferredSetup()
{
    static juce::AudioDeviceManager::AudioDeviceSetup setup;
    setup.sampleRate = 44100; // that of the sounds; the nearest one is taken
    return &setup;
}
#else
void juceversions::processAnnouncements() {}
const juce::AudioDeviceManager::AudioDeviceSetup* juceversions::preferredSetup()
{
    return nullptr;
}
#endif

#if JUCE_MAJOR_VERSION == 8
namespace
{
using juce::AudioDeviceManager;
using juce::MidiDeviceListConnection;

MidiDeviceListConnection& connectionOf(AudioDeviceManager& manager);

// The connection is private, and the manager has no function to renew it. An explicit instantiation
// may name a private member: if a later JUCE 8 has no such member, this does not compile.
template <auto member>
struct Access {
    friend MidiDeviceListConnection& connectionOf(AudioDeviceManager& manager)
    {
        return manager.*member;
    }
};
template struct Access<&AudioDeviceManager::midiDeviceListConnection>;
} // namespace

void juceversions::releaseSequencer(AudioDeviceManager& manager)
{
    connectionOf(manager).reset();
}

void juceversions::holdSequencer(AudioDeviceManager& manager)
{
    // Without a function to call: the station lists the ports itself.
    connectionOf(manager) = MidiDeviceListConnection::make(nullptr);
}
#else
void juceversions::releaseSequencer(juce::AudioDeviceManager&) {}
void juceversions::holdSequencer(juce::AudioDeviceManager&) {}
#endif
