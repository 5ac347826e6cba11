// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/figures/limits.h"

#include <algorithm>
#include <cmath>

namespace
{
/// What lies beyond three standard deviations of a normal distribution, on either side.
constexpr double limitTail = 0.00135;

/// The least number of units that as many or fewer pass with a probability of limitTail or more;
/// share: that of the units that pass on average.
int lowLimit(int units, double share)
{
    if (share <= 0)
        return 0;
    if (share >= 1)
        return units;
    // What lies lower has no part in the sum that a double could hold.
    constexpr double deviations = 20;
    const double mean = units * share;
    const double first = std::max(0.0, mean - deviations * std::sqrt(mean * (1 - share)));
    double sum = 0;
    for (int passed = static_cast<int>(first); passed < units; ++passed) {
        const int failed = units - passed;
        sum += std::exp(std::lgamma(units + 1.0) - std::lgamma(passed + 1.0) -
                        std::lgamma(failed + 1.0) + passed * std::log(share) +
                        failed * std::log1p(-share));
        if (sum >= limitTail)
            return passed;
    }
    return units;
}
} // namespace

Limits limitsOf(int units, const Tally& all)
{
    if (units == 0 || all.units == 0)
        return {};
    // More than high pass where fewer than the low limit of failures fail.
    return {lowLimit(units, 1.0 * all.passedFirst / all.units),
            units - lowLimit(units, 1.0 * (all.units - all.passedFirst) / all.units)};
}

Verdict verdictOn(const Tally& part, const Tally& all)
{
    const Limits limits = limitsOf(part.units, all);
    if (part.passedFirst < limits.low)
        return Verdict::Below;
    return part.passedFirst > limits.high ? Verdict::Above : Verdict::Within;
}
