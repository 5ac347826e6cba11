// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QCoreApplication>
#include <QFile>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <vector>

// What requests are to sound like, worked out from the sound files alone.

using Samples = std::vector<double>;

inline constexpr double fileRate = 44100.0;
inline constexpr double inaudible = 0.001;

enum class Request { None, Beep, Click, Bell };

/// A request and the device's sample at which it begins.
struct Begin {
    Request request;
    std::size_t at = 0;
};

struct Layer {
    const char* sound;
    int semitones; ///< Up from the file's own pitch.
    Request request;
    double level;
    double fadeSeconds; ///< At its start, and when it is stopped.
};
inline constexpr Layer layers[] = {{"Beep", 0, Request::Beep, 100 / 127.0, 0.005},
                                   {"Click", -1, Request::Beep, 100 / 127.0, 0.01},
                                   {"Bell", -2, Request::Beep, 100 / 127.0, 0.005},
                                   {"Click", 0, Request::Click, 20 / 127.0, 0.01},
                                   {"Bell", -1, Request::Click, 20 / 127.0, 0.005},
                                   {"Bell", 0, Request::Bell, 50 / 127.0, 0.005}};

/// "Beep", "Click" or "Bell": the file beside the test.
inline QString soundPath(const QString& sound)
{
    return QCoreApplication::applicationDirPath() + "/Zorvi_AssemblyTest_" + sound + ".wav";
}

/// What follows a plain 16-bit header; -1 to 1.
inline Samples soundSamples(const QString& sound)
{
    QFile file(soundPath(sound));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("no sound file %s", qPrintable(file.fileName()));
    const QByteArray bytes = file.readAll().mid(44);
    Samples samples;
    for (int i = 0; i + 1 < bytes.size(); i += 2)
        samples.push_back(qFromLittleEndian<qint16>(bytes.constData() + i) / 32768.0);
    return samples;
}

/// Adds a layer that is stopped after so many samples.
inline void add(Samples& mix, const Layer& layer, std::size_t at, double stop, double rate)
{
    Samples file = soundSamples(layer.sound);
    const double length = std::min(10 * fileRate, static_cast<double>(file.size()));
    file.resize(file.size() + 2);
    const double step = std::exp2(layer.semitones / 12.0) * fileRate / rate;
    // The sampler counts its fades in samples of the file's rate, whatever the device's is.
    const double fade = layer.fadeSeconds * fileRate;
    for (double i = 0; i * step <= length; ++i) {
        const double left = i < stop ? 1.0 : std::max(0.0, 1.0 - (i - stop + 1) / fade);
        const double envelope = std::min({1.0, stop / fade, (i + 1) / fade}) * left;
        const auto before = static_cast<std::size_t>(i * step);
        const double share = i * step - static_cast<double>(before);
        const std::size_t place = at + static_cast<std::size_t>(i);
        mix.resize(std::max(mix.size(), place + 1));
        mix[place] +=
            layer.level * envelope * (file[before] * (1.0 - share) + file[before + 1] * share);
    }
}

/// All requests together on a device of that rate in Hz. A request stops the one like it; of a file
/// the first ten seconds are played.
inline Samples mixOf(const std::vector<Begin>& requests, double rate = fileRate)
{
    Samples mix;
    for (auto begin = requests.begin(); begin != requests.end(); ++begin) {
        const auto next = std::find_if(begin + 1, requests.end(), [&](const Begin& later) {
            return later.request == begin->request;
        });
        for (const Layer& layer : layers)
            if (layer.request == begin->request)
                add(mix, layer, begin->at,
                    next == requests.end() ? HUGE_VAL : static_cast<double>(next->at - begin->at),
                    rate);
    }
    return mix;
}

inline double peak(const Samples& samples)
{
    double largest = 0.0;
    for (const double sample : samples)
        largest = std::max(largest, std::abs(sample));
    return largest;
}

/// How far two sounds are apart; what lies after the end of either is silence.
inline double distance(Samples a, const Samples& b)
{
    a.resize(std::max(a.size(), b.size()));
    for (std::size_t i = 0; i < b.size(); ++i)
        a[i] -= b[i];
    return peak(a);
}
