// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "app/juceversions.h"
#include "sequencer/porttable.h"
#include "tests/support/station.h"

namespace station
{
/// The ports that other programs may connect.
inline QVector<memorysequencer::Address> openPorts()
{
    QVector<memorysequencer::Address> ports;
    auto& table = memorysequencer::portTable();
    for (auto client = table.clientAfter(0); client; client = table.clientAfter(client->first))
        for (auto port = table.portAfter({client->first, -1}); port;
             port = table.portAfter({client->first, port->first}))
            if ((port->second.capability &
                 (SND_SEQ_PORT_CAP_SUBS_READ | SND_SEQ_PORT_CAP_SUBS_WRITE)) != 0)
                ports << memorysequencer::Address(client->first, port->first);
    return ports;
}

/// Whether JUCE lists the ports that there are. JUCE 7 and 8 ask the sequencer at each listing.
/// JUCE 9 processes announcements on its own thread, and has processed all when none is pending.
inline bool everyPortIsListed()
{
    if (JUCE_MAJOR_VERSION < 9)
        return true;
    juceversions::processAnnouncements();
    auto devices = juce::MidiInput::getAvailableDevices();
    devices.addArray(juce::MidiOutput::getAvailableDevices());
    QSet<QString> listed;
    for (const auto& device : devices)
        listed << device.identifier.toRawUTF8();
    QSet<QString> open;
    for (const auto& [client, port] : openPorts())
        open << QString("%1-%2").arg(client).arg(port);
    return listed == open && memorysequencer::portTable().waitingEvents() == 0;
}

/// JUCE 9 has to see the last port of that number go first, or it takes the new one for gone.
inline bool plug(SimulatedUnit& unit)
{
    return QTest::qWaitFor(everyPortIsListed) && unit.plug();
}

/// The device label after a poll that sees the sequencer's ports as they are now.
inline QString labelAfterPoll(MainWindow& window)
{
    if (!QTest::qWaitFor(everyPortIsListed))
        return "JUCE lists other ports than there are";
    window.slot_PollDevices();
    return deviceLabel(window);
}
} // namespace station
