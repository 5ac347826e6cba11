// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <alsa/asoundlib.h>

#include <cstddef>
#include <deque>
#include <vector>

namespace memorysequencer
{
/// The events that wait for one client, in order of arrival, and a file descriptor that is readable
/// while there are any. Grows as needed and drops no event. Not thread-safe: the port table locks.
class EventQueue
{
public:
    EventQueue();
    ~EventQueue();
    EventQueue(const EventQueue&) = delete;
    EventQueue& operator=(const EventQueue&) = delete;

    /// The file descriptor to poll; negative if none was left.
    int descriptor() const { return fd; }
    std::size_t size() const { return events.size(); }

    /// Appends a copy of the event, its variable-length data included. System exclusive data is
    /// split into chunks of at most 256 bytes, as the kernel does.
    void push(const snd_seq_event_t& event);

    /// The oldest event, valid until the next call; null if none waits.
    snd_seq_event_t* take();

    /// Drops the events for a port that was deleted.
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
