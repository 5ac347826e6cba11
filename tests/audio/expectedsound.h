// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

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

/// "Beep", "Click" or "Bell": the file beside the test.
QString soundPath(const QString& sound);
/// What follows a plain 16-bit header; -1 to 1.
Samples soundSamples(const QString& sound);

/// All requests together on a device of that rate in Hz. A request stops the one like it; of a file
/// the first ten seconds are played.
Samples mixOf(const std::vector<Begin>& requests, double rate = fileRate);

/// How far two sounds are apart; what lies after the end of either is silence.
double distance(Samples a, const Samples& b);
double peak(const Samples& samples);
