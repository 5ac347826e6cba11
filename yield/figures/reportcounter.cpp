// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/figures/reportcounter.h"

#include "yield/logs/attemptrules.h"

#include <algorithm>
#include <iterator>
#include <set>

namespace
{
constexpr qint64 maxFalseFailureMs = 60 * 60 * 1000;
constexpr qint64 maxTestTimeMs = 24 * 60 * 60 * 1000; // longer: a clock was set in mid-run

/// The number in those digits of a time, 2026-11-21T14:03:12 or 2026-11-21T14:03:12.345; 0 where it
/// is shorter. Read digit by digit: QDateTime would take a large part of the time of a report.
int number(const QString& time, int begin, int digits)
{
    int value = 0;
    for (int i = begin; i < begin + digits && i < time.size(); ++i)
        value = 10 * value + time[i].unicode() - '0';
    return value;
}

QDate dayOf(const QString& time)
{
    return {number(time, 0, 4), number(time, 5, 2), number(time, 8, 2)};
}

/// Between two times of a station's wall clock: the same on a computer in any time zone.
qint64 msBetween(const QString& earlier, const QString& later)
{
    const auto msOf = [](const QString& time) {
        const qint64 hours = dayOf(time).toJulianDay() * 24 + number(time, 11, 2);
        const qint64 seconds = (hours * 60 + number(time, 14, 2)) * 60 + number(time, 17, 2);
        return seconds * 1000 + number(time, 20, 3);
    };
    return msOf(later) - msOf(earlier);
}

/// The median: of the middle one, or the mean of the middle two.
TestTimes testTimesOf(std::vector<int>& timesMs)
{
    const std::size_t count = timesMs.size();
    if (count == 0)
        return {};
    std::sort(timesMs.begin(), timesMs.end());
    return {static_cast<int>(count),
            (1.0 * timesMs[(count - 1) / 2] + timesMs[count / 2]) / 2 / 1000};
}

/// Leaves the first ones.
template <typename Units>
void shorten(Units& units, std::size_t maxUnits)
{
    if (units.size() > maxUnits)
        units.erase(std::prev(units.end()));
}

void countFirst(Report& report, const Attempt& first, const attemptrules::Outcome& outcome)
{
    StationReport& station = report.stations[first.station];
    const int end = outcome.abortedAt.value_or(report.controls.size());
    for (ControlFailures& control : report.controls)
        if (control.componentNum < end &&
            attemptrules::isTested(control.componentNum, first.tests18))
            ++control.units;
    if (outcome.abortedAt)
        ++report.controls[end].aborted;
    std::set<int> failed;
    for (const auto& band : outcome.missed) {
        ++report.controls[band.componentNum].missedBands[band.band];
        failed.insert(band.componentNum);
    }
    for (const int c : failed) {
        ++report.controls[c].failed;
        ++station.failed[c];
    }
}

void countFailures(Report& report, const std::vector<Attempt>& unit,
                   const std::vector<attemptrules::Outcome>& outcomes)
{
    const Attempt* failure = nullptr; // the last attempt that was not aborted, if it failed
    for (std::size_t i = 0; i < unit.size(); ++i) {
        if (outcomes[i].abortedAt)
            continue;
        const bool hasPassed = outcomes[i].hasPassed();
        if (hasPassed && failure && failure->station == unit[i].station &&
            msBetween(failure->testedAt, unit[i].testedAt) <= maxFalseFailureMs)
            ++report.falseFailures;
        report.failedAttempts += hasPassed ? 0 : 1;
        failure = hasPassed ? nullptr : &unit[i];
    }
}
} // namespace

QRegularExpression serialPattern(const QString& wildcard)
{
    // A serial is no path: its slashes are characters like others. It has no NUL.
    return QRegularExpression(
        QRegularExpression::wildcardToRegularExpression(wildcard).replace("[^/]", "[^\\0]"));
}

ReportCounter::ReportCounter(const ReportRequest& request)
{
    report.request = request;
    for (const QString& pattern : request.exclude)
        exclude.push_back(serialPattern(pattern));
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c)
        report.controls.append({c, 0, 0, QVector<int>(bandmarks::bandCount(c)), 0});
}

Report ReportCounter::finish()
{
    std::vector<int> all;
    for (auto& [station, times] : testTimesMs) {
        if (report.stations.contains(station))
            report.stations[station].testTimes = testTimesOf(times);
        all.insert(all.end(), times.begin(), times.end());
    }
    report.testTimes = testTimesOf(all);
    for (const ControlFailures& control : qAsConst(report.controls)) {
        report.failureCount += control.failed;
        if (control.failed > 0)
            report.failedControls.append(control);
    }
    std::stable_sort(report.failedControls.begin(), report.failedControls.end(),
                     [](const auto& a, const auto& b) { return a.failed > b.failed; });
    return report;
}

bool ReportCounter::isCounted(const Attempt& first)
{
    if (!report.request.includes(dayOf(first.testedAt)) || !report.request.includes(first.station))
        return false;
    const bool isExcluded = std::any_of(exclude.begin(), exclude.end(), [&](const auto& pattern) {
        return pattern.match(first.serial).hasMatch();
    });
    report.excluded += isExcluded ? 1 : 0;
    return !isExcluded;
}

void ReportCounter::add(const std::vector<Attempt>& unit)
{
    if (!isCounted(unit.front()))
        return;
    std::vector<attemptrules::Outcome> outcomes;
    for (const Attempt& attempt : unit) {
        const auto outcome = attemptrules::outcomeOf(attempt.marks, attempt.tests18);
        const int index = std::min(static_cast<int>(outcomes.size()), Report::maxNumbers - 1);
        if (index == report.attemptsByNumber.size())
            report.attemptsByNumber.append(AttemptsByNumber());
        AttemptsByNumber& number = report.attemptsByNumber[index];
        ++number.attempts;
        number.passed += outcome.hasPassed() ? 1 : 0;
        number.aborted += outcome.abortedAt ? 1 : 0;
        if (outcome.hasPassed())
            countTestTime(attempt);
        outcomes.push_back(outcome);
    }
    countFirst(report, unit.front(), outcomes.front());
    countFailures(report, unit, outcomes);

    const auto attempts = static_cast<int>(unit.size());
    const bool hasPassed = outcomes.back().hasPassed();
    const Tally tally{1, attempts, outcomes.front().hasPassed() ? 1 : 0, hasPassed ? 1 : 0,
                      outcomes.front().abortedAt ? 1 : 0};
    report.total += tally;
    report.stations[unit.front().station].tally += tally;
    const QDate day = dayOf(unit.front().testedAt);
    if (day >= QDate(2000, 1, 1) && day <= report.request.now.date().addDays(1))
        report.days[day] += tally;
    else
        ++report.implausibleDates;

    if (hasPassed && attempts == 1)
        return;
    const TestedUnit tested{unit.front(), unit.back(), attempts};
    if (!hasPassed)
        report.notPassedUnits.emplace(tested.last.testedAt, tested);
    shorten(report.notPassedUnits, Report::maxNotPassedUnits);
    if (attempts > 1) {
        ++report.retestedUnitCount;
        report.retestedUnits.emplace(std::make_pair(attempts, tested.last.testedAt), tested);
    }
    shorten(report.retestedUnits, Report::maxRetestedUnits);
}

void ReportCounter::countTestTime(const Attempt& attempt)
{
    if (attempt.startedAt.isEmpty())
        return;
    const qint64 time = msBetween(attempt.startedAt, attempt.testedAt);
    if (time >= 0 && time <= maxTestTimeMs)
        testTimesMs[attempt.station].push_back(static_cast<int>(time));
}
