// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/figures/report.h"

#include "yield/figures/logtime.h"
#include "yield/logs/attemptrules.h"

#include <algorithm>
#include <numeric>

std::optional<TopFailure> StationReport::topFailure() const
{
    const auto top = std::max_element(failed.cbegin(), failed.cend());
    if (*top == 0)
        return std::nullopt;
    return TopFailure{static_cast<int>(std::distance(failed.cbegin(), top)), *top};
}

QVector<Report::Day> Report::recentDays() const
{
    constexpr int maxDays = 8;
    QVector<Day> recent;
    for (int ago = 0; ago < maxDays; ++ago) {
        const QDate date = request.now.date().addDays(-ago);
        if (request.includes(date))
            recent.append({date, days.value(date)});
    }
    return recent;
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

std::optional<qint64> Report::ageOf(const LastLog& lastLog) const
{
    if (lastLog.testedAt.isEmpty())
        return std::nullopt;
    constexpr qint64 msPerSecond = 1000;
    const qint64 now = logtime::msOf(request.now.toString("yyyy-MM-ddTHH:mm:ss"));
    return (now - logtime::msOf(lastLog.testedAt)) / msPerSecond;
}

bool Report::needsAttention(const LastLog& lastLog) const
{
    constexpr qint64 daySeconds = 24 * 60 * 60;
    return ageOf(lastLog).value_or(daySeconds + 1) > daySeconds;
}

QString resultOf(const Attempt& attempt)
{
    const auto outcome = attemptrules::outcomeOf(attempt.marks, attempt.tests18);
    if (outcome.abortedAt)
        return "aborted";
    return outcome.hasPassed() ? "passed" : "failed";
}

int failureCount(const QVector<ControlFailures>& controls)
{
    return std::accumulate(
        controls.cbegin(), controls.cend(), 0,
        [](int sum, const ControlFailures& control) { return sum + control.failed; });
}
