// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QTemporaryDir>

#include <functional>

/// A sound card in this process: ALSA's default device writes into a pipe, and what reads the pipe
/// sets the pace. To be made before the program asks ALSA for the first time.
class SoundPipe
{
public:
    SoundPipe();
    /// From here on a thread reads what is played, so that the device can be closed.
    ~SoundPipe();

    /// Whether anything is played once that was done; it was silent before.
    bool isHeard(const std::function<void()>& action);

private:
    /// Whether that many frames are played without a sample other than 0.
    bool staysSilent(int frames);

    const QTemporaryDir folder;
    int fd;
};
