// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "recordinganalysis.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace
{
constexpr double silent = 0.0002;

double product(const double* a, const double* b, std::size_t length)
{
    return std::inner_product(a, a + length, b, 0.0);
}
} // namespace

std::vector<Stretch> soundingStretches(const std::vector<double>& recording, std::size_t silence)
{
    std::vector<Stretch> stretches;
    for (std::size_t i = 0; i < recording.size(); ++i) {
        if (std::abs(recording[i]) < silent)
            continue;
        if (stretches.empty() || i - stretches.back().end > silence)
            stretches.push_back({i, i});
        stretches.back().end = i;
    }
    return stretches;
}

double correlation(const double* a, const double* b, std::size_t length)
{
    const double scale = std::sqrt(product(a, a, length) * product(b, b, length));
    return scale > 0.0 ? product(a, b, length) / scale : 0.0;
}

std::size_t bestStart(const std::vector<double>& recording, std::size_t guess,
                      const std::vector<double>& sound)
{
    constexpr std::size_t reach = 300;
    std::size_t best = guess;
    double highest = -1.0;
    for (std::size_t start = guess < reach ? 0 : guess - reach; start < guess + reach; ++start) {
        if (start + sound.size() > recording.size())
            break;
        const double found = correlation(recording.data() + start, sound.data(),
                                         std::min<std::size_t>(sound.size(), 4000));
        if (found > highest) {
            highest = found;
            best = start;
        }
    }
    return best;
}

std::vector<double> levelsOf(const std::vector<std::vector<double>>& sounds,
                             const std::vector<double>& recording, std::size_t start)
{
    const std::size_t n = sounds.size();
    // The normal equations, the right-hand side as their last column, solved by elimination.
    std::vector<std::vector<double>> rows(n, std::vector<double>(n + 1));
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j < n; ++j)
            rows[i][j] = product(sounds[i].data(), sounds[j].data(),
                                 std::min(sounds[i].size(), sounds[j].size()));
        rows[i][n] = product(sounds[i].data(), recording.data() + start,
                             std::min(sounds[i].size(), recording.size() - start));
    }
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t k = 0; k < n; ++k) {
            if (k == i)
                continue;
            const double factor = rows[k][i] / rows[i][i];
            for (std::size_t j = i; j <= n; ++j)
                rows[k][j] -= factor * rows[i][j];
        }
    std::vector<double> levels;
    for (std::size_t i = 0; i < n; ++i)
        levels.push_back(rows[i][n] / rows[i][i]);
    return levels;
}
