// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QFile>
#include <QTemporaryDir>

#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

/// ALSA's default device, on every machine: what is played goes into a pipe, and reading it sets
/// the pace. Made before the first sound device is opened.
class SoundCard
{
public:
    SoundCard()
    {
        mkfifo(pipePath, S_IRUSR | S_IWUSR);
        pipe = open(pipePath, O_RDONLY | O_NONBLOCK);
        qputenv("HOME", QFile::encodeName(home.path())); // where ALSA looks
        define("type asym capture.pcm null playback.pcm { type file format raw slave.pcm null "
               "file \"" +
               pipePath + "\" }");
    }

    /// Makes the default device another one, by its definition in ALSA's language.
    void define(const QByteArray& definition) const
    {
        QFile alsa(home.filePath(".asoundrc"));
        alsa.open(QIODevice::WriteOnly);
        alsa.write("pcm.!default {" + definition + "}\n");
    }

    /// What was played next, channel by channel; empty once the device is closed, or where nothing
    /// comes for ten seconds.
    std::vector<float> read() const
    {
        std::vector<float> frames(1024);
        pollfd ready{pipe, POLLIN, 0};
        poll(&ready, 1, 10000);
        const auto bytes = ::read(pipe, frames.data(), frames.size() * sizeof(float));
        frames.resize(bytes < 0 ? 0 : static_cast<std::size_t>(bytes) / sizeof(float));
        return frames;
    }

    const QTemporaryDir home;
    const QByteArray pipePath = QFile::encodeName(home.filePath("pipe"));

private:
    int pipe = -1;
};
