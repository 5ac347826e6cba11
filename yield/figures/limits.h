// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

/// How units of one day, of one station or of the whole report fared.
struct Tally {
    int units = 0;
    int attempts = 0;    ///< At these units: all of them, wherever and whenever.
    int passedFirst = 0; ///< Units whose first attempt is complete: the first-pass yield.
    int passedLast = 0;  ///< Units whose last attempt is complete: the final yield, so far.
    int endedFirst = 0;  ///< Units whose first attempt ended early.

    Tally& operator+=(const Tally& other)
    {
        units += other.units;
        attempts += other.attempts;
        passedFirst += other.passedFirst;
        passedLast += other.passedLast;
        endedFirst += other.endedFirst;
        return *this;
    }
};

/// Control limits of a p-chart: how many of a number of units may pass first, both ends included,
/// if chance alone makes the difference.
struct Limits {
    int low = 0;
    int high = 0;
};

/// The limits for so many units (0 or more) around the first-pass yield of all units. Exact, from
/// the binomial distribution: fewer than low pass with a probability below 0.135 %, and more than
/// high too. Without units both are 0; if none or all of all units passed, both are none or all.
Limits limitsOf(int units, const Tally& all);

/// Whether the first-pass yield of a part of all units lies below its limits, within or above.
enum class Verdict { Below, Within, Above };
Verdict verdictOn(const Tally& part, const Tally& all);
