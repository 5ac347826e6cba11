// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/figures/report.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <tuple>

bool LastTestedFirst::operator()(const TestedUnit& a, const TestedUnit& b) const
{
    return std::tie(b.last.testedAt, a.last.serial) < std::tie(a.last.testedAt, b.last.serial);
}

bool MostAttemptsFirst::operator()(const TestedUnit& a, const TestedUnit& b) const
{
    return a.attempts == b.attempts ? LastTestedFirst()(a, b) : a.attempts > b.attempts;
}

QVector<ControlFailures> Report::failedControls() const
{
    QVector<ControlFailures> failed;
    std::copy_if(controls.cbegin(), controls.cend(), std::back_inserter(failed),
                 [](const ControlFailures& control) { return control.failed > 0; });
    std::stable_sort(failed.begin(), failed.end(),
                     [](const auto& a, const auto& b) { return a.failed > b.failed; });
    return failed;
}

int Report::failureCount() const
{
    return std::accumulate(
        controls.cbegin(), controls.cend(), 0,
        [](int sum, const ControlFailures& control) { return sum + control.failed; });
}
