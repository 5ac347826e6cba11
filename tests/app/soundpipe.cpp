// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/app/soundpipe.h"

#include <QFile>

#include <array>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
/// More than the longest sound, with what waits in the buffers.
constexpr int longFrames = 2 * 44100 + 32768;
} // namespace

SoundPipe::SoundPipe()
{
    const QByteArray pipe = QFile::encodeName(folder.filePath("pipe"));
    mkfifo(pipe.constData(), 0600);
    fd = open(pipe.constData(), O_RDWR);
    QFile alsa(folder.filePath(".asoundrc"));
    alsa.open(QIODevice::WriteOnly);
    alsa.write("pcm.!default { type asym capture.pcm null playback.pcm { type file slave.pcm null "
               "format raw file \"" +
               pipe + "\" } }\n");
    qputenv("HOME", QFile::encodeName(folder.path()));
}

SoundPipe::~SoundPipe()
{
    std::thread([pipe = fd] {
        std::array<char, 65536> bytes;
        while (read(pipe, bytes.data(), bytes.size()) > 0)
            ;
    }).detach();
}

bool SoundPipe::isHeard(const std::function<void()>& action)
{
    while (!staysSilent(longFrames))
        ;
    action();
    return !staysSilent(longFrames);
}

bool SoundPipe::staysSilent(int frames)
{
    std::array<qint32, 1024> samples; // a frame is two of 16 or 32 bits
    for (int left = frames; left > 0;) {
        pollfd ready{fd, POLLIN, 0};
        if (poll(&ready, 1, 20000) <= 0)
            return true; // nothing plays
        const auto bytes = read(fd, samples.data(), sizeof samples);
        for (std::size_t i = 0; i < static_cast<std::size_t>(bytes) / sizeof(qint32); ++i)
            if (samples[i] != 0)
                return false;
        left -= static_cast<int>(bytes) / 8;
    }
    return true;
}
