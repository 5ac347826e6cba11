// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/figures/limits.h"

#include <algorithm>
#include <cmath>

namespace
{
/// The probability beyond three standard deviations of a normal distribution, on either side.
constexpr double tailProbability = 0.00135;

/// The smallest number for which as many units or fewer pass with a probability of tailProbability
/// or more; share: of the units that pass on average.
int lowerLimit(int units, double share)
{
    if (share <= 0)
        return 0;
    if (share >= 1)
        return units;
    // Terms further down are too small to change the sum.
    constexpr double deviations = 20;
    const double mean = units * share;
    const double first = std::max(0.0, mean - deviations * std::sqrt(mean * (1 - share)));
    double sum = 0;
    for (int passed = static_cast<int>(first); passed < units; ++passed) {
        const int failed = units - passed;
        sum += std::exp(std::lgamma(units + 1.0) - std::lgamma(passed + 1.0) -
                        std::lgamma(failed + 1.0) + passed * std::log(share) +
                        failed * std::log1p(-share));
        if (sum >= tailProbability)
            return passed;
    }
    return units;
}
} // namespace

ControlLimits controlLimits(int units, const Tally& all)
{
    if (units == 0 || all.units == 0)
        return {};
    // More than upper pass where fewer fail than the lower limit of failures.
    return {lowerLimit(units, 1.0 * all.passedFirst / all.units),
            units - lowerLimit(units, 1.0 * (all.units - all.passedFirst) / all.units)};
}
