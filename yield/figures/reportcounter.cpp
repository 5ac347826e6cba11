// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/figures/reportcounter.h"

#include "yield/figures/logtime.h"

#include <algorithm>
#include <set>
#include <tuple>

namespace
{
constexpr qint64 maxFalseFailureMs = 60 * 60 * 1000;
constexpr qint64 maxTestTimeMs = 24 * 60 * 60 * 1000; // longer: a clock was set in mid-run

/// A serial is no path, but Qt's wildcards end at a slash. So each slash becomes a NUL: no serial
/// has one.
QString withoutSlashes(QString text)
{
    return text.replace('/', QChar(QChar::Null));
}

bool hasMoreAttempts(const TestedUnit& a, const TestedUnit& b)
{
    return std::tie(b.attempts, b.last.testedAt, a.last.serial) <
           std::tie(a.attempts, a.last.testedAt, b.last.serial);
}

/// The middle one, or the mean of the middle two; at least one time.
double medianSeconds(std::vector<int>& timesMs)
{
    const auto middle = timesMs.begin() + static_cast<std::ptrdiff_t>(timesMs.size() / 2);
    std::nth_element(timesMs.begin(), middle, timesMs.end());
    const double upper = *middle;
    const bool isOdd = timesMs.size() % 2 == 1;
    const double lower = isOdd ? upper : *std::max_element(timesMs.begin(), middle);
    return (lower + upper) / 2 / 1000;
}

bool isNewer(const TestedUnit& a, const TestedUnit& b)
{
    return std::tie(b.last.testedAt, a.last.serial) < std::tie(a.last.testedAt, b.last.serial);
}

/// units: a heap whose top is dropped first when there are more than maxUnits.
template <typename IsBefore>
void keep(QVector<TestedUnit>& units, const TestedUnit& unit, int maxUnits, IsBefore isBefore)
{
    units.append(unit);
    std::push_heap(units.begin(), units.end(), isBefore);
    if (units.size() <= maxUnits)
        return;
    std::pop_heap(units.begin(), units.end(), isBefore);
    units.removeLast();
}
} // namespace

QRegularExpression serialPattern(const QString& wildcard)
{
    return QRegularExpression(
        QRegularExpression::wildcardToRegularExpression(withoutSlashes(wildcard)));
}

ReportCounter::ReportCounter(const ReportRequest& request)
{
    report.request = request;
    auto& lastLogs = report.request.lastLogs;
    const auto isOther = [&](const LastLog& each) { return !request.includes(each.station); };
    lastLogs.erase(std::remove_if(lastLogs.begin(), lastLogs.end(), isOther), lastLogs.end());
    for (const QString& pattern : request.exclude)
        exclude.push_back(serialPattern(pattern));
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c)
        report.controls.append({c, 0, 0, QVector<int>(bandmarks::bandCount(c)), 0});
}

void ReportCounter::add(const Attempt& attempt)
{
    if (unit.attempts == 0 || unit.first.serial != attempt.serial) {
        finishUnit();
        unit = Unit();
        unit.first = attempt;
        unit.isCounted = isCounted(attempt);
    }
    ++unit.attempts;
    if (!unit.isCounted)
        return;
    unit.last = attempt;
    const auto outcome = attemptrules::outcomeOf(attempt.marks, attempt.tests18);
    if (unit.attempts == 1)
        countFirst(outcome);
    unit.tally.attempts = unit.attempts;
    unit.tally.passedLast = outcome.hasPassed() ? 1 : 0;
    countNumber(outcome);
    countFailure(outcome);
    if (outcome.hasPassed())
        countTestTime(attempt);
}

Report ReportCounter::finish()
{
    finishUnit();
    finishTestTimes();
    std::sort_heap(report.notPassedUnits.begin(), report.notPassedUnits.end(), isNewer);
    std::sort_heap(report.retestedUnits.begin(), report.retestedUnits.end(), hasMoreAttempts);
    return report;
}

bool ReportCounter::isCounted(const Attempt& first)
{
    if (!report.request.includes(logtime::dayOf(first.testedAt)) ||
        !report.request.includes(first.station))
        return false;
    const QString serial = withoutSlashes(first.serial);
    const bool isExcluded = std::any_of(exclude.begin(), exclude.end(), [&](const auto& pattern) {
        return pattern.match(serial).hasMatch();
    });
    report.excluded += isExcluded ? 1 : 0;
    return !isExcluded;
}

void ReportCounter::countFirst(const attemptrules::Outcome& outcome)
{
    unit.tally.units = 1;
    unit.tally.passedFirst = outcome.hasPassed() ? 1 : 0;
    unit.tally.abortedFirst = outcome.abortedAt ? 1 : 0;
    StationReport& station = report.stations[unit.first.station];
    station.name = unit.first.station;
    const int end = outcome.abortedAt.value_or(report.controls.size());
    for (int c = roster::firstComponent; c < end; ++c)
        if (attemptrules::isTested(c, unit.first.tests18))
            ++report.controls[c].units;
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

void ReportCounter::countNumber(const attemptrules::Outcome& outcome)
{
    const int index = std::min(unit.attempts, Report::maxNumbers) - 1;
    if (index == report.attemptsByNumber.size())
        report.attemptsByNumber.append(AttemptsByNumber());
    AttemptsByNumber& number = report.attemptsByNumber[index];
    ++number.attempts;
    number.passed += outcome.hasPassed() ? 1 : 0;
    number.aborted += outcome.abortedAt ? 1 : 0;
}

void ReportCounter::countFailure(const attemptrules::Outcome& outcome)
{
    if (outcome.abortedAt)
        return;
    FalseFailures& failures = report.falseFailures;
    const bool passed = outcome.hasPassed();
    if (passed && unit.failure && unit.failure->station == unit.last.station &&
        logtime::msOf(unit.last.testedAt) - logtime::msOf(unit.failure->testedAt) <=
            maxFalseFailureMs)
        ++failures.passedNext;
    unit.failure.reset();
    if (!passed) {
        ++failures.failed;
        unit.failure = unit.last;
    }
}

void ReportCounter::countTestTime(const Attempt& attempt)
{
    if (attempt.startedAt.isEmpty())
        return;
    const qint64 time = logtime::msOf(attempt.testedAt) - logtime::msOf(attempt.startedAt);
    if (time >= 0 && time <= maxTestTimeMs)
        testTimesMs[attempt.station].push_back(static_cast<int>(time));
}

void ReportCounter::finishUnit()
{
    if (!unit.isCounted)
        return;
    report.total += unit.tally;
    report.stations[unit.first.station].tally += unit.tally;
    const QDate day = logtime::dayOf(unit.first.testedAt);
    const bool isPlausible = day.year() >= 2000 && day <= report.request.now.date().addDays(1);
    (isPlausible ? report.days[day] : report.implausibleDates) += unit.tally;

    if (unit.tally.passedLast == 0)
        keep(report.notPassedUnits, unit, Report::maxNotPassedUnits, isNewer);
    if (unit.attempts == 1)
        return;
    ++report.retestedUnitCount;
    keep(report.retestedUnits, unit, Report::maxRetestedUnits, hasMoreAttempts);
}

void ReportCounter::finishTestTimes()
{
    std::vector<int> all;
    for (auto& [station, times] : testTimesMs) {
        if (report.stations.contains(station))
            report.stations[station].testTimes = {static_cast<int>(times.size()),
                                                  medianSeconds(times)};
        all.insert(all.end(), times.begin(), times.end());
    }
    if (!all.empty())
        report.testTimes = {static_cast<int>(all.size()), medianSeconds(all)};
}
