// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "audio/soundserver.h"

#include <QDebug>
#include <QElapsedTimer>
#include <QThread>

#if defined(__linux__)
#include <alsa/asoundlib.h>

#include <algorithm>
#include <csignal>
#include <vector>

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{
/// Less than the five seconds for which JUCE waits for a device. A card that has to wake up takes
/// one or two.
constexpr qint64 maxTestMs = 4000;

constexpr pid_t notStarted = -1;
pid_t child = notStarted;

/// The default device as JUCE opens it: 44.1 kHz, four periods of 512 frames; null if it cannot be.
constexpr snd_pcm_uframes_t periodFrames = 512;
snd_pcm_t* openDefault(snd_pcm_stream_t direction)
{
    constexpr unsigned channels = 2;
    constexpr unsigned rate = 44100;
    constexpr unsigned microseconds = 4 * periodFrames * 1000000 / rate;
    snd_pcm_t* device = nullptr;
    if (snd_pcm_open(&device, "default", direction, 0) < 0)
        return nullptr;
    if (snd_pcm_set_params(device, SND_PCM_FORMAT_S16, SND_PCM_ACCESS_RW_INTERLEAVED, channels,
                           rate, 1, microseconds) == 0)
        return device;
    snd_pcm_close(device);
    return nullptr;
}

void ignoreError(const char*, int, const char*, int, const char*, ...) {} // NOLINT: ALSA's form

/// Opens, starts and closes the device in JUCE's order, and does not return if JUCE would not.
void playSilence()
{
    snd_lib_error_set_handler(ignoreError); // the station prints what matters
    snd_pcm_t* input = openDefault(SND_PCM_STREAM_CAPTURE);
    snd_pcm_t* output = openDefault(SND_PCM_STREAM_PLAYBACK);
    snd_pcm_uframes_t bufferFrames = 0;
    snd_pcm_uframes_t unused = 0;
    if (output != nullptr)
        snd_pcm_get_params(output, &bufferFrames, &unused);
    // One frame more than the device keeps: it takes that once it has played something.
    std::vector<short> silence(2 * (bufferFrames + periodFrames));
    if (input != nullptr)
        snd_pcm_readi(input, silence.data(), periodFrames);
    std::fill(silence.begin(), silence.end(), short{0});
    if (output != nullptr)
        snd_pcm_writei(output, silence.data(), bufferFrames + 1);
    for (snd_pcm_t* device : {output, input})
        if (device != nullptr)
            snd_pcm_close(device);
}

/// Whether the child has ended by itself. Ends it if that takes too long.
bool hasChildEnded()
{
    QElapsedTimer waiting;
    waiting.start();
    for (;;) {
        int status = 0;
        const pid_t ended = waitpid(child, &status, WNOHANG);
        if (ended == child)
            return WIFEXITED(status);
        if (ended < 0) // ignored by whoever started the station: ended, without a status
            return true;
        if (waiting.elapsed() > maxTestMs)
            break;
        QThread::msleep(2);
    }
    kill(child, SIGKILL);
    return false;
}
} // namespace

void soundserver::startTest()
{
    const pid_t station = getpid();
    child = fork();
    if (child != 0)
        return;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() == station) // else it has ended meanwhile
        playSilence();
    _exit(0);
}

bool soundserver::isRunning()
{
    const bool isRunning = child == notStarted || hasChildEnded();
    child = notStarted;
    if (!isRunning)
        qWarning() << "The sound server does not play: no sound until the next start.";
    return isRunning;
}
#else
void soundserver::startTest() {}
bool soundserver::isRunning()
{
    return true;
}
#endif
