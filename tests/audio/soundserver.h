// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QProcess>
#include <QTemporaryDir>

#include <vector>

/// A private PulseAudio server without a sound card: ALSA's default device of this process plays
/// into it, and what was played can be recorded. It ends with the object.
class SoundServer
{
public:
    /// Whether its programs are installed.
    static bool isInstalled();

    /// Starts a server whose sink runs at a rate in Hz; false where it does not come up. Must
    /// precede the first use of ALSA in the process.
    bool start(int sinkRate);
    ~SoundServer();

    /// Records what is played from now on, on the left channel, until it is stopped. False where
    /// nothing arrives.
    bool startRecording();
    std::vector<double> stopRecording();

private:
    QTemporaryDir directory;
    QProcess server;
    QProcess recorder;
    QByteArray recorded;
    int rate = 0;
};
