// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <cstddef>
#include <vector>

/// Finding known sounds in a recording.

/// A stretch of sound between silences: from the first sample that can be heard, to the last.
struct Stretch {
    std::size_t begin;
    std::size_t end;
};

/// The stretches of sound in a recording that are apart by at least so many samples of silence.
std::vector<Stretch> soundingStretches(const std::vector<double>& recording, std::size_t silence);

/// Where in the recording, within 300 samples of a guess, the sound begins that correlates best.
std::size_t bestStart(const std::vector<double>& recording, std::size_t guess,
                      const std::vector<double>& sound);

/// How much of each sound, all beginning at start, makes up the recording best (least squares).
std::vector<double> levelsOf(const std::vector<std::vector<double>>& sounds,
                             const std::vector<double>& recording, std::size_t start);

/// The correlation of two stretches of the same length, -1 to 1.
double correlation(const double* a, const double* b, std::size_t length);
