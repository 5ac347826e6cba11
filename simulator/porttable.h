// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "simulator/eventqueue.h"

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
    std::map<int, Port> ports;
    EventQueue queue;
};

/// All clients of the sequencer, their ports and who listens to whom. Thread-safe; functions that
/// can fail answer a negative errno value, as the sequencer's own do.
class PortTable
{
public:
    /// While on, no port can be made or subscribed to.
    void failOpens(bool fail) { failing = fail; }
    /// While on, no client can be opened.
    void setAbsent(bool isAbsent) { absent = isAbsent; }

    /// Null while the sequencer is absent or if the system has no descriptor left.
    Client* openClient();
    void closeClient(Client& client);
    int clientCount();
    /// The first client with a number above the given one and its number of ports.
    std::optional<std::pair<int, int>> clientAfter(int client);

    /// The new port's number, the lowest that is free.
    int createPort(Client& client, const char* name, unsigned int capability);
    int deletePort(Client& client, int port);
    int portCount();
    /// The first port of a client with a number above the given one.
    std::optional<std::pair<int, Port>> portAfter(const Address& address);

    int subscribe(const Address& source, const Address& destination);

    /// Hands a copy to everyone who listens to the event's source port, in order of subscription.
    int send(const Client& sender, snd_seq_event_t event);
    /// The client's oldest event, valid until its next call; null if there is none.
    snd_seq_event_t* receive(Client& client);
    std::size_t waitingFor(const Client& client);
    /// Over all clients.
    std::size_t waitingEvents();

private:
    Client* find(int client);
    bool exists(const Address& address);

    std::atomic<bool> failing{false};
    std::atomic<bool> absent{false};
    std::mutex mutex;
    std::map<int, std::unique_ptr<Client>> clients;
    std::vector<std::pair<Address, Address>> subscriptions;
};

/// The one table of the process.
PortTable& portTable();
} // namespace memorysequencer
