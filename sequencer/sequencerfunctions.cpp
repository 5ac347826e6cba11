// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "sequencer/porttable.h"

#include <poll.h>
#include <unistd.h>

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
    int pid;
};

struct PortInfo {
    int client;
    int port;
    unsigned int capability;
    char name[64];

    void set(const memorysequencer::Port& from)
    {
        capability = from.capability;
        std::strncpy(name, from.name.c_str(), sizeof(name) - 1);
        name[sizeof(name) - 1] = '\0';
    }
};

struct Subscription {
    snd_seq_addr_t sender;
    snd_seq_addr_t dest;
};

struct SubscriberQuery {
    snd_seq_addr_t port;
    snd_seq_addr_t subscriber;
    int index;
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
    Client* client = portTable().openClient(getpid());
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
    as<ClientInfo>(info) = {next->first, next->second, 0};
    return 0;
}

int snd_seq_get_any_client_info(snd_seq_t*, int client, snd_seq_client_info_t* info)
{
    const auto pid = portTable().processOf(client);
    if (!pid)
        return -ENOENT;
    as<ClientInfo>(info) = {client, 0, *pid};
    return 0;
}

snd_seq_client_type_t snd_seq_client_info_get_type(const snd_seq_client_info_t*)
{
    return SND_SEQ_USER_CLIENT; // the kernel's are not in the table
}

int snd_seq_client_info_get_pid(const snd_seq_client_info_t* info)
{
    return as<ClientInfo>(info).pid;
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
    answer.set(next->second);
    return 0;
}

int snd_seq_get_any_port_info(snd_seq_t*, int client, int port, snd_seq_port_info_t* info)
{
    const auto found = portTable().portAt({client, port});
    if (!found)
        return -ENOENT;
    as<PortInfo>(info).port = port;
    as<PortInfo>(info).set(*found);
    return 0;
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

// Who reads from a port.

size_t snd_seq_query_subscribe_sizeof()
{
    return sizeof(SubscriberQuery);
}

void snd_seq_query_subscribe_set_root(snd_seq_query_subscribe_t* info,
                                      const snd_seq_addr_t* address)
{
    as<SubscriberQuery>(info).port = *address;
}

void snd_seq_query_subscribe_set_type(snd_seq_query_subscribe_t*, snd_seq_query_subs_type_t)
{
    // Only SND_SEQ_QUERY_SUBS_READ is asked for.
}

void snd_seq_query_subscribe_set_index(snd_seq_query_subscribe_t* info, int index)
{
    as<SubscriberQuery>(info).index = index;
}

const snd_seq_addr_t* snd_seq_query_subscribe_get_addr(const snd_seq_query_subscribe_t* info)
{
    return &as<SubscriberQuery>(info).subscriber;
}

int snd_seq_query_port_subscribers(snd_seq_t*, snd_seq_query_subscribe_t* info)
{
    auto& query = as<SubscriberQuery>(info);
    const auto readers = portTable().readersOf({query.port.client, query.port.port});
    if (!readers)
        return -ENXIO;
    const auto index = static_cast<std::size_t>(query.index);
    if (index >= readers->size())
        return -ENOENT;
    const auto [client, port] = readers->at(index);
    query.subscriber = {static_cast<unsigned char>(client), static_cast<unsigned char>(port)};
    return 0;
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

// What only JUCE 9 calls, in a program in which cmake/midi2absent.cpp hides the functions for
// MIDI 2.0.

int snd_seq_get_client_info(snd_seq_t*, snd_seq_client_info_t*)
{
    return 0; // of the answer only the name is read
}

const char* snd_seq_client_info_get_name(snd_seq_client_info_t*)
{
    return "Zorvi";
}

int snd_seq_alloc_queue(snd_seq_t*)
{
    return -ENOMEM; // without a queue JUCE takes the time itself
}

void snd_seq_port_subscribe_set_queue(snd_seq_port_subscribe_t*, int) {}
void snd_seq_port_subscribe_set_time_real(snd_seq_port_subscribe_t*, int) {}
void snd_seq_port_subscribe_set_time_update(snd_seq_port_subscribe_t*, int) {}

int snd_seq_disconnect_from(snd_seq_t*, int, int, int)
{
    return 0; // the port is deleted next, and its subscriptions with it
}

int snd_seq_disconnect_to(snd_seq_t*, int, int, int)
{
    return 0; // as above
}
