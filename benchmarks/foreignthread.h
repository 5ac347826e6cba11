// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QSemaphore>

#include <functional>
#include <thread>

/// A thread that is neither the GUI's nor Qt's, as JUCE's MIDI thread is; it does one job at a
/// time.
class ForeignThread
{
public:
    ForeignThread() = default;
    ForeignThread(const ForeignThread&) = delete;
    ForeignThread& operator=(const ForeignThread&) = delete;
    ~ForeignThread()
    {
        run({});
        thread.join();
    }

    /// Does the job over there and returns when it is done; an empty one ends the thread.
    void run(const std::function<void()>& job)
    {
        next = &job;
        given.release();
        done.acquire();
    }

private:
    void work()
    {
        bool more = true;
        while (more) {
            given.acquire();
            more = static_cast<bool>(*next);
            if (more)
                (*next)();
            done.release();
        }
    }

    const std::function<void()>* next = nullptr;
    QSemaphore given;
    QSemaphore done;
    std::thread thread{[this] { work(); }};
};
