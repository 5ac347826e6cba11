// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/unitlink.h"

#include "app/juceversions.h"
#include "app/unitidentity.h"

#include <algorithm>
#include <cerrno>

#include <unistd.h>

namespace
{
/// JUCE's identifier of a port is the number of its client, a hyphen and its own number.
snd_seq_addr_t addressOf(const juce::String& identifier)
{
    const auto client = identifier.upToFirstOccurrenceOf("-", false, false).getIntValue();
    const auto port = identifier.fromFirstOccurrenceOf("-", false, false).getIntValue();
    return {static_cast<unsigned char>(client), static_cast<unsigned char>(port)};
}

/// Whether a port belongs to this process; true as well on a kernel before 4.6, which does not
/// tell.
bool mayBeOurs(snd_seq_t* sequencer, const snd_seq_addr_t& port)
{
    constexpr int unknownProcess = -1;
    snd_seq_client_info_t* client = nullptr;
    snd_seq_client_info_alloca(&client);
    if (snd_seq_get_any_client_info(sequencer, port.client, client) != 0 ||
        snd_seq_client_info_get_type(client) != SND_SEQ_USER_CLIENT)
        return false;
    const int process = snd_seq_client_info_get_pid(client);
    return process == getpid() || process == unknownProcess;
}

/// Whether other programs may connect to a port. They may not to an input that JUCE has opened to a
/// device, but they may to the unused input.
bool isOpenToOthers(snd_seq_t* sequencer, const snd_seq_addr_t& port)
{
    snd_seq_port_info_t* info = nullptr;
    snd_seq_port_info_alloca(&info);
    return snd_seq_get_any_port_info(sequencer, port.client, port.port, info) == 0 &&
           (snd_seq_port_info_get_capability(info) & SND_SEQ_PORT_CAP_SUBS_WRITE) != 0;
}
} // namespace

UnitLink::UnitLink(juce::AudioDeviceManager& deviceManager)
    : manager(deviceManager)
{
}

juce::StringArray UnitLink::listUnits()
{
    juceversions::processAnnouncements();
    const auto ports = juce::MidiInput::getAvailableDevices();
    reconnectSequencer(!ports.isEmpty());
    return unitidentity::unitsIn(ports);
}

void UnitLink::reconnectSequencer(bool portsListed)
{
    // With a sequencer there are always ports: the system's own.
    if (sequencerHeld && !portsListed)
        juceversions::releaseSequencer(manager);
    else if (!sequencerHeld && portsListed)
        juceversions::holdSequencer(manager);
    sequencerHeld = portsListed;
}

std::unique_ptr<juce::MidiInput> UnitLink::openInput(juce::MidiInputCallback* callback)
{
    keepInputThreadRunning();
    return juce::MidiInput::openDevice(listUnits()[0], callback);
}

void UnitLink::keepInputThreadRunning()
{
    // JUCE 7 needs up to 100 ms to stop its input thread, and an input opened in that time receives
    // nothing. Can go with Debian 12: the thread of JUCE 8 runs on.
    if (unusedInput != nullptr)
        return;
    unusedInput = juce::MidiInput::createNewDevice("Zorvi Assembly Test", &unusedCallback);
    if (unusedInput != nullptr)
        unusedInput->start();
}

bool UnitLink::isSubscribedTo(const juce::StringArray& units)
{
    snd_seq_t* opened = nullptr;
    if (sequencer == nullptr && snd_seq_open(&opened, "default", SND_SEQ_OPEN_DUPLEX, 0) == 0) {
        snd_seq_set_client_name(opened, "Zorvi Assembly Test");
        sequencer.reset(opened);
    }
    return sequencer == nullptr ||
           std::any_of(units.begin(), units.end(),
                       [this](const auto& unit) { return hasOurReader(unit); });
}

bool UnitLink::hasOurReader(const juce::String& unit) const
{
    const snd_seq_addr_t port = addressOf(unit);
    snd_seq_query_subscribe_t* query = nullptr;
    snd_seq_query_subscribe_alloca(&query);
    snd_seq_query_subscribe_set_root(query, &port);
    snd_seq_query_subscribe_set_type(query, SND_SEQ_QUERY_SUBS_READ);
    for (int index = 0;; ++index) {
        snd_seq_query_subscribe_set_index(query, index);
        const int result = snd_seq_query_port_subscribers(sequencer.get(), query);
        if (result != 0)
            return result != -ENOENT; // no further reader, otherwise not known
        const snd_seq_addr_t& reader = *snd_seq_query_subscribe_get_addr(query);
        if (mayBeOurs(sequencer.get(), reader) && !isOpenToOthers(sequencer.get(), reader))
            return true;
    }
}
