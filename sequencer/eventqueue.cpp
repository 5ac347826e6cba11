// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "sequencer/eventqueue.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>

namespace
{
constexpr std::size_t maxChunkBytes = 256;
} // namespace

namespace memorysequencer
{
EventQueue::EventQueue()
    : fd(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC))
{
}

EventQueue::~EventQueue()
{
    if (fd >= 0)
        close(fd);
}

void EventQueue::push(const snd_seq_event_t& event)
{
    if (!snd_seq_ev_is_variable(&event)) {
        append(event, nullptr, 0);
        return;
    }
    const auto* data = static_cast<const unsigned char*>(event.data.ext.ptr);
    for (std::size_t rest = event.data.ext.len; rest > 0;) {
        const std::size_t chunk = std::min(rest, maxChunkBytes);
        append(event, data, chunk);
        data += chunk;
        rest -= chunk;
    }
}

void EventQueue::append(const snd_seq_event_t& event, const unsigned char* data, std::size_t size)
{
    events.push_back({event, {}});
    if (data != nullptr)
        events.back().data.assign(data, data + size);
    if (events.size() == 1)
        eventfd_write(fd, 1);
}

snd_seq_event_t* EventQueue::take()
{
    if (events.empty())
        return nullptr;
    taken = std::move(events.front());
    events.pop_front();
    if (events.empty())
        clearSignal();
    if (snd_seq_ev_is_variable(&taken.event))
        snd_seq_ev_set_variable(&taken.event, static_cast<unsigned int>(taken.data.size()),
                                taken.data.data());
    return &taken.event;
}

void EventQueue::dropEventsFor(unsigned char port)
{
    if (events.empty())
        return;
    const auto isForPort = [port](const Entry& entry) { return entry.event.dest.port == port; };
    events.erase(std::remove_if(events.begin(), events.end(), isForPort), events.end());
    if (events.empty())
        clearSignal();
}

void EventQueue::clearSignal()
{
    eventfd_t count = 0;
    eventfd_read(fd, &count);
}
} // namespace memorysequencer
