// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "sequencer/eventqueue.h"

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace memorysequencer
{
/// Client number and port number.
using Address = std::pair<int, int>;

struct Port {
    std::string name;
    unsigned int capability;
};

struct Client {
    int id;
    int pid; ///< Of the process that it belongs to.
    std::map<int, Port> ports;
    EventQueue queue;
};

/// An in-memory MIDI sequencer: its clients, their ports and subscriptions. A program that links
/// the object library zorvi_sequencer gets the functions of <alsa/seq.h> that JUCE and the station
/// call from there, in place of the system library's, so that both run unchanged where the kernel
/// has no sequencer. Ports exist within the process only.
///
/// Thread-safe. Functions that can fail return a negative errno value, as the system library's do.
class PortTable
{
public:
    /// While on, no port can be made or subscribed to: every attempt to open a device fails.
    /// JUCE 7.0.5 loses the port on each such attempt and from then on keeps the sequencer open.
    void failOpens(bool fail) { failing = fail; }
    /// While on, no client can be opened, as on a machine without a sequencer. Takes effect when
    /// JUCE opens the sequencer next: after the last port of the process was released. A port that
    /// is asked for meanwhile keeps JUCE from ever opening it again.
    void setAbsent(bool isAbsent) { absent = isAbsent; }

    /// While on, it does not tell which process a client belongs to, as kernels before 4.6 do not.
    void hideProcesses(bool hide) { processesHidden = hide; }

    /// A client of this process, or of another one as far as the functions tell. Null while the
    /// sequencer is absent, or if no file descriptor is left.
    Client* openClient(int pid);
    void closeClient(Client& client);
    int clientCount();
    /// The next client after the given number, and how many ports it has.
    std::optional<std::pair<int, int>> clientAfter(int client);
    /// The process that a client belongs to, -1 while processes are hidden; nothing if there is no
    /// such client.
    std::optional<int> processOf(int client);

    /// Returns the new port's number, the lowest free one.
    int createPort(Client& client, const char* name, unsigned int capability);
    int deletePort(Client& client, int port);
    int portCount();
    /// The client's next port after the given number.
    std::optional<std::pair<int, Port>> portAfter(const Address& address);
    /// Nothing if there is no such port.
    std::optional<Port> portAt(const Address& address);

    /// As the kernel does, for a client that may also connect others: a port that is not its own
    /// has to permit subscriptions. The source may be the system's port for announcements.
    int subscribe(const Client& client, const Address& source, const Address& destination);
    /// The ports that read from this one, in order of subscription; nothing if it does not exist.
    std::optional<std::vector<Address>> readersOf(const Address& source);

    /// Queues a copy for every subscriber of the event's source port, in order of subscription.
    int send(const Client& sender, snd_seq_event_t event);
    /// The client's oldest event, valid until its next call; null if none waits.
    snd_seq_event_t* receive(Client& client);
    std::size_t waitingFor(const Client& client);
    /// Events that wait, over all clients.
    std::size_t waitingEvents();

private:
    Client* find(int client);
    bool exists(const Address& address);
    /// Queues a copy for every subscriber of the port, in order of subscription.
    void deliver(const Address& source, snd_seq_event_t& event);
    /// Tells the subscribers of the system's announcements that a port came or went.
    void announce(snd_seq_event_type type, const Address& address);

    std::atomic<bool> failing{false};
    std::atomic<bool> absent{false};
    std::atomic<bool> processesHidden{false};
    std::mutex mutex;
    std::map<int, std::unique_ptr<Client>> clients;
    std::vector<std::pair<Address, Address>> subscriptions;
};

/// The one table of the process.
PortTable& portTable();
} // namespace memorysequencer
