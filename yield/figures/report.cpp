// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/figures/report.h"

#include <tuple>

bool LastTestedFirst::operator()(const TestedUnit& a, const TestedUnit& b) const
{
    return std::tie(b.last.testedAt, a.last.serial) < std::tie(a.last.testedAt, b.last.serial);
}

bool MostAttemptsFirst::operator()(const TestedUnit& a, const TestedUnit& b) const
{
    return a.attempts == b.attempts ? LastTestedFirst()(a, b) : a.attempts > b.attempts;
}
