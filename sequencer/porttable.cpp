// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "sequencer/porttable.h"

#include <algorithm>
#include <cerrno>

namespace
{
/// Lower numbers are for the kernel's clients.
constexpr int firstUserClient = 128;
/// Events carry port numbers in one byte; higher values have other meanings.
constexpr int lastPort = 252;
/// Where the kernel announces which ports come and go.
const memorysequencer::Address announcements(SND_SEQ_CLIENT_SYSTEM, SND_SEQ_PORT_SYSTEM_ANNOUNCE);

/// The lowest number from `first` on that is no key of the map.
template <typename Map>
int lowestFree(const Map& map, int first)
{
    int number = first;
    while (map.count(number) != 0)
        ++number;
    return number;
}
} // namespace

namespace memorysequencer
{
Client* PortTable::openClient(int pid)
{
    if (absent)
        return nullptr;
    const std::lock_guard lock(mutex);
    auto client = std::make_unique<Client>();
    if (client->queue.descriptor() < 0)
        return nullptr;
    client->id = lowestFree(clients, firstUserClient);
    client->pid = pid;
    return (clients[client->id] = std::move(client)).get();
}

void PortTable::closeClient(Client& client)
{
    while (!client.ports.empty())
        deletePort(client, client.ports.begin()->first);
    const std::lock_guard lock(mutex);
    clients.erase(client.id);
}

int PortTable::clientCount()
{
    const std::lock_guard lock(mutex);
    return static_cast<int>(clients.size());
}

std::optional<std::pair<int, int>> PortTable::clientAfter(int client)
{
    const std::lock_guard lock(mutex);
    const auto next = clients.upper_bound(client);
    if (next == clients.end())
        return std::nullopt;
    return std::pair(next->first, static_cast<int>(next->second->ports.size()));
}

std::optional<int> PortTable::processOf(int client)
{
    const std::lock_guard lock(mutex);
    const Client* found = find(client);
    if (found == nullptr)
        return std::nullopt;
    return processesHidden ? -1 : found->pid;
}

int PortTable::createPort(Client& client, const char* name, unsigned int capability)
{
    if (failing)
        return -ENOMEM;
    const std::lock_guard lock(mutex);
    const int port = lowestFree(client.ports, 0);
    if (port > lastPort)
        return -ENOMEM;
    client.ports[port] = {name, capability};
    announce(SND_SEQ_EVENT_PORT_START, {client.id, port});
    return port;
}

int PortTable::deletePort(Client& client, int port)
{
    const std::lock_guard lock(mutex);
    if (client.ports.erase(port) == 0)
        return -EINVAL;
    const Address gone(client.id, port);
    const auto isGone = [&gone](const std::pair<Address, Address>& subscription) {
        return subscription.first == gone || subscription.second == gone;
    };
    subscriptions.erase(std::remove_if(subscriptions.begin(), subscriptions.end(), isGone),
                        subscriptions.end());
    client.queue.dropEventsFor(static_cast<unsigned char>(port));
    announce(SND_SEQ_EVENT_PORT_EXIT, gone);
    return 0;
}

int PortTable::portCount()
{
    const std::lock_guard lock(mutex);
    std::size_t count = 0;
    for (const auto& [id, client] : clients)
        count += client->ports.size();
    return static_cast<int>(count);
}

std::optional<std::pair<int, Port>> PortTable::portAfter(const Address& address)
{
    const std::lock_guard lock(mutex);
    const Client* client = find(address.first);
    if (client == nullptr)
        return std::nullopt;
    const auto next = client->ports.upper_bound(address.second);
    if (next == client->ports.end())
        return std::nullopt;
    return *next;
}

std::optional<Port> PortTable::portAt(const Address& address)
{
    const std::lock_guard lock(mutex);
    const Client* client = find(address.first);
    if (client == nullptr || client->ports.count(address.second) == 0)
        return std::nullopt;
    return client->ports.at(address.second);
}

int PortTable::subscribe(const Client& client, const Address& source, const Address& destination)
{
    if (failing)
        return -EPERM;
    const std::lock_guard lock(mutex);
    if (!exists(source) || !exists(destination))
        return -EINVAL;
    const auto permits = [&](const Address& port, unsigned int capability) {
        return port == announcements || port.first == client.id ||
               (find(port.first)->ports.at(port.second).capability & capability) != 0;
    };
    if (!permits(source, SND_SEQ_PORT_CAP_SUBS_READ) ||
        !permits(destination, SND_SEQ_PORT_CAP_SUBS_WRITE))
        return -EPERM;
    const std::pair subscription(source, destination);
    if (std::find(subscriptions.begin(), subscriptions.end(), subscription) != subscriptions.end())
        return -EBUSY;
    subscriptions.push_back(subscription);
    return 0;
}

std::optional<std::vector<Address>> PortTable::readersOf(const Address& source)
{
    const std::lock_guard lock(mutex);
    if (!exists(source))
        return std::nullopt;
    std::vector<Address> readers;
    for (const auto& [from, to] : subscriptions)
        if (from == source)
            readers.push_back(to);
    return readers;
}

int PortTable::send(const Client& sender, snd_seq_event_t event)
{
    const std::lock_guard lock(mutex);
    const Address source(sender.id, event.source.port);
    if (!exists(source))
        return -EINVAL;
    event.source.client = static_cast<unsigned char>(sender.id);
    deliver(source, event);
    return 0;
}

snd_seq_event_t* PortTable::receive(Client& client)
{
    const std::lock_guard lock(mutex);
    return client.queue.take();
}

std::size_t PortTable::waitingFor(const Client& client)
{
    const std::lock_guard lock(mutex);
    return client.queue.size();
}

std::size_t PortTable::waitingEvents()
{
    const std::lock_guard lock(mutex);
    std::size_t count = 0;
    for (const auto& [id, client] : clients)
        count += client->queue.size();
    return count;
}

Client* PortTable::find(int client)
{
    const auto found = clients.find(client);
    return found == clients.end() ? nullptr : found->second.get();
}

bool PortTable::exists(const Address& address)
{
    if (address == announcements)
        return true;
    const Client* client = find(address.first);
    return client != nullptr && client->ports.count(address.second) != 0;
}

void PortTable::deliver(const Address& source, snd_seq_event_t& event)
{
    for (const auto& [from, to] : subscriptions) {
        if (from != source)
            continue;
        event.dest.client = static_cast<unsigned char>(to.first);
        event.dest.port = static_cast<unsigned char>(to.second);
        find(to.first)->queue.push(event);
    }
}

void PortTable::announce(snd_seq_event_type type, const Address& address)
{
    snd_seq_event_t event{};
    event.type = static_cast<snd_seq_event_type_t>(type);
    event.data.addr = {static_cast<unsigned char>(address.first),
                       static_cast<unsigned char>(address.second)};
    deliver(announcements, event);
}

PortTable& portTable()
{
    // Never destroyed: ports may still be closed at the very end of the process.
    static PortTable& table = *new PortTable;
    return table;
}
} // namespace memorysequencer
