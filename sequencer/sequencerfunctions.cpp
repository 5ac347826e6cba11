// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "sequencer/porttable.h"

#include <poll.h>

#include <cerrno>
#include <cstring>

using memorysequencer::Client;
using memorysequencer::portTable;

namespace
{
// The system library's types are opaque, so these are used for them. Callers provide zeroed memory
// for the info types and never destroy them.
struct SystemInfo {
    int clients;
};

struct ClientInfo {
    int client;
    int ports;
};

struct PortInfo {
    int client;
    int port;
    unsigned int capability;
    int sources;
    char name[64];
};

struct Subscription {
    snd_seq_addr_t sender;
    snd_seq_addr_t dest;
};

template <typename T>
T& as(void* opaque)
{
    return *static_cast<T*>(opaque);
}

template <typename T>
const T& as(const void* opaque)
{
    return *static_cast<const T*>(opaque);
}
} // namespace

// Clients.

int snd_seq_open(snd_seq_t** handle, const char*, int, int)
{
    Client* client = portTable().openClient();
    if (client == nullptr)
        return -ENOENT;
    *handle = reinterpret_cast<snd_seq_t*>(client);
    return 0;
}

int snd_seq_close(snd_seq_t* handle)
{
    portTable().closeClient(as<Client>(handle));
    return 0;
}

int snd_seq_nonblock(snd_seq_t*, int nonblock)
{
    return nonblock != 0 ? 0 : -EINVAL; // reading never waits here
}

int snd_seq_set_client_name(snd_seq_t*, const char*)
{
    return 0; // ports are told apart by their own names
}

int snd_seq_client_id(snd_seq_t* handle)
{
    return as<Client>(handle).id;
}

size_t snd_seq_system_info_sizeof()
{
    return sizeof(SystemInfo);
}

int snd_seq_system_info(snd_seq_t*, snd_seq_system_info_t* info)
{
    as<SystemInfo>(info).clients = portTable().clientCount();
    return 0;
}

int snd_seq_system_info_get_cur_clients(const snd_seq_system_info_t* info)
{
    return as<SystemInfo>(info).clients;
}

size_t snd_seq_client_info_sizeof()
{
    return sizeof(ClientInfo);
}

int snd_seq_query_next_client(snd_seq_t*, snd_seq_client_info_t* info)
{
    const auto next = portTable().clientAfter(as<ClientInfo>(info).client);
    if (!next)
        return -ENOENT;
    as<ClientInfo>(info) = {next->first, next->second};
    return 0;
}

int snd_seq_client_info_get_client(const snd_seq_client_info_t* info)
{
    return as<ClientInfo>(info).client;
}

int snd_seq_client_info_get_num_ports(const snd_seq_client_info_t* info)
{
    return as<ClientInfo>(info).ports;
}

// Ports.

int snd_seq_create_simple_port(snd_seq_t* handle, const char* name, unsigned int caps, unsigned int)
{
    return portTable().createPort(as<Client>(handle), name, caps);
}

int snd_seq_delete_simple_port(snd_seq_t* handle, int port)
{
    return portTable().deletePort(as<Client>(handle), port);
}

int snd_seq_connect_from(snd_seq_t* handle, int port, int sourceClient, int sourcePort)
{
    const auto& client = as<Client>(handle);
    return portTable().subscribe(client, {sourceClient, sourcePort}, {client.id, port});
}

int snd_seq_connect_to(snd_seq_t* handle, int port, int destClient, int destPort)
{
    const auto& client = as<Client>(handle);
    return portTable().subscribe(client, {client.id, port}, {destClient, destPort});
}

size_t snd_seq_port_subscribe_sizeof()
{
    return sizeof(Subscription);
}

void snd_seq_port_subscribe_set_sender(snd_seq_port_subscribe_t* info,
                                       const snd_seq_addr_t* address)
{
    as<Subscription>(info).sender = *address;
}

void snd_seq_port_subscribe_set_dest(snd_seq_port_subscribe_t* info, const snd_seq_addr_t* address)
{
    as<Subscription>(info).dest = *address;
}

int snd_seq_subscribe_port(snd_seq_t* handle, snd_seq_port_subscribe_t* info)
{
    const auto& [sender, dest] = as<Subscription>(info);
    return portTable().subscribe(as<Client>(handle), {sender.client, sender.port},
                                 {dest.client, dest.port});
}

size_t snd_seq_port_info_sizeof()
{
    return sizeof(PortInfo);
}

void snd_seq_port_info_set_client(snd_seq_port_info_t* info, int client)
{
    as<PortInfo>(info).client = client;
}

void snd_seq_port_info_set_port(snd_seq_port_info_t* info, int port)
{
    as<PortInfo>(info).port = port;
}

int snd_seq_query_next_port(snd_seq_t*, snd_seq_port_info_t* info)
{
    PortInfo& answer = as<PortInfo>(info);
    const auto next = portTable().portAfter({answer.client, answer.port});
    if (!next)
        return -ENOENT;
    answer.port = next->first;
    answer.capability = next->second.capability;
    std::strncpy(answer.name, next->second.name.c_str(), sizeof(answer.name) - 1);
    answer.name[sizeof(answer.name) - 1] = '\0';
    return 0;
}

int snd_seq_get_any_port_info(snd_seq_t*, int client, int port, snd_seq_port_info_t* info)
{
    const int sources = portTable().sourcesOf({client, port});
    as<PortInfo>(info).sources = sources;
    return sources < 0 ? sources : 0;
}

int snd_seq_port_info_get_write_use(const snd_seq_port_info_t* info)
{
    return as<PortInfo>(info).sources;
}

int snd_seq_port_info_get_port(const snd_seq_port_info_t* info)
{
    return as<PortInfo>(info).port;
}

const char* snd_seq_port_info_get_name(const snd_seq_port_info_t* info)
{
    return as<PortInfo>(info).name;
}

unsigned int snd_seq_port_info_get_capability(const snd_seq_port_info_t* info)
{
    return as<PortInfo>(info).capability;
}

// Events.

int snd_seq_event_output_direct(snd_seq_t* handle, snd_seq_event_t* event)
{
    return portTable().send(as<Client>(handle), *event);
}

int snd_seq_poll_descriptors_count(snd_seq_t*, short)
{
    return 1;
}

int snd_seq_poll_descriptors(snd_seq_t* handle, pollfd* descriptors, unsigned int space, short)
{
    if (space == 0)
        return 0;
    *descriptors = {as<Client>(handle).queue.descriptor(), POLLIN, 0};
    return 1;
}

int snd_seq_event_input(snd_seq_t* handle, snd_seq_event_t** event)
{
    *event = portTable().receive(as<Client>(handle));
    return *event != nullptr ? 0 : -EAGAIN;
}

int snd_seq_event_input_pending(snd_seq_t* handle, int)
{
    return static_cast<int>(portTable().waitingFor(as<Client>(handle)));
}

int snd_seq_free_event(snd_seq_event_t*)
{
    return 0; // the queue owns it
}
