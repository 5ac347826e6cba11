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
