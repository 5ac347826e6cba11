// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

/// The results of the units of one day, of one station or of the whole report.
struct Tally {
    int units = 0;
    int attempts = 0;     ///< Of these units: all of them, at any time and station.
    int passedFirst = 0;  ///< Units whose first attempt passed: the first-pass yield.
    int passedLast = 0;   ///< Units whose last attempt passed: the final yield so far.
    int abortedFirst = 0; ///< Units whose first attempt was aborted.

    Tally& operator+=(const Tally& other)
    {
        units += other.units;
        attempts += other.attempts;
        passedFirst += other.passedFirst;
        passedLast += other.passedLast;
        abortedFirst += other.abortedFirst;
        return *this;
    }
};

/// Where a first-pass yield lies.
enum class Position { BelowLcl, Within, AboveUcl };

/// The control limits of a p-chart as numbers of passed units, both ends included.
struct ControlLimits {
    int lower = 0;
    int upper = 0;

    Position positionOf(int passed) const
    {
        if (passed < lower)
            return Position::BelowLcl;
        return passed > upper ? Position::AboveUcl : Position::Within;
    }
};

/// The control limits of that many units (0 or more) around the first-pass yield of all units.
/// Exact, from the binomial distribution: fewer than lower pass with a probability below 0.135 %,
/// and so do more than upper. Both are 0 without units; if none or all of all units passed, both
/// are none or all.
ControlLimits controlLimits(int units, const Tally& all);
