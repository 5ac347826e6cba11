// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/figures/tally.h"

Tally& Tally::operator+=(const Tally& other)
{
    units += other.units;
    attempts += other.attempts;
    passedFirst += other.passedFirst;
    passedLast += other.passedLast;
    endedFirst += other.endedFirst;
    return *this;
}
