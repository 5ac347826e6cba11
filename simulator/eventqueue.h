// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <alsa/asoundlib.h>

#include <cstddef>
#include <deque>
#include <vector>

namespace memorysequencer
{
/// The events that wait for one client, in the order they came, and a descriptor that polls
/// readable while there are any. It grows as needed; nothing is ever dropped for want of room.
/// Not thread-safe: the port table locks around it.
class EventQueue
{
public:
    EventQueue();
    ~EventQueue();
    EventQueue(const EventQueue&) = delete;
    EventQueue& operator=(const EventQueue&) = delete;

    /// The descriptor to poll; negative if the system had none left.
    int descriptor() const { return fd; }
    std::size_t size() const { return events.size(); }

    /// Appends a copy of the event, its variable-length data included. System exclusive data comes
    /// out in pieces of at most 256 bytes, as the kernel hands on what a unit sends.
    void push(const snd_seq_event_t& event);

    /// The oldest event, valid until the next call; null if there is none.
    snd_seq_event_t* take();

    /// Forgets what waits for a port that is no more.
    void dropEventsFor(unsigned char port);

private:
    struct Entry {
        snd_seq_event_t event;
        std::vector<unsigned char> data;
    };

    void append(const snd_seq_event_t& event, const unsigned char* data, std::size_t size);
    void clearSignal();

    int fd;
    std::deque<Entry> events;
    Entry taken{};
};
} // namespace memorysequencer
