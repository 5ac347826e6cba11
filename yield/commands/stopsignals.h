// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QSocketNotifier>

#include <memory>

/// While it lives, SIGTERM and SIGINT end the event loop with status 0 instead of the process. To
/// be made before any thread is started.
class StopSignals
{
public:
    StopSignals();
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

private:
    int descriptor;
    std::unique_ptr<QSocketNotifier> notifier;
};
