// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/figures/reportcounter.h"

#include <algorithm>
#include <iterator>
#include <set>

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

/// Of the middle one, or the mean of the middle two.
TestTimes testTimesOf(std::vector<int>& timesMs)
{
    if (timesMs.empty())
        return {};
    const auto sorted = [&](std::size_t index) {
        const auto element = timesMs.begin() + static_cast<std::ptrdiff_t>(index);
        std::nth_element(timesMs.begin(), element, timesMs.end());
        return *element / 1000.0;
    };
    const std::size_t count = timesMs.size();
    return {static_cast<int>(count), (sorted((count - 1) / 2) + sorted(count / 2)) / 2};
}

template <typename Units>
void keep(Units& units, const TestedUnit& unit, std::size_t maxUnits)
{
    units.insert(unit);
    if (units.size() > maxUnits)
        units.erase(std::prev(units.end()));
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
    const bool passed = outcome.hasPassed();
    if (passed && unit.failure && unit.failure->station == unit.last.station &&
        msBetween(unit.failure->testedAt, unit.last.testedAt) <= maxFalseFailureMs)
        ++report.falseFailures;
    unit.failure.reset();
    if (!passed) {
        ++report.failedAttempts;
        unit.failure = unit.last;
    }
}

void ReportCounter::countTestTime(const Attempt& attempt)
{
    if (attempt.startedAt.isEmpty())
        return;
    const qint64 time = msBetween(attempt.startedAt, attempt.testedAt);
    if (time >= 0 && time <= maxTestTimeMs)
        testTimesMs[attempt.station].push_back(static_cast<int>(time));
}

void ReportCounter::finishUnit()
{
    if (!unit.isCounted)
        return;
    report.total += unit.tally;
    report.stations[unit.first.station].tally += unit.tally;
    const QDate day = dayOf(unit.first.testedAt);
    if (day.year() >= 2000 && day <= report.request.now.date().addDays(1))
        report.days[day] += unit.tally;
    else
        ++report.implausibleDates;

    if (unit.tally.passedLast == 0)
        keep(report.notPassedUnits, unit, Report::maxNotPassedUnits);
    if (unit.attempts == 1)
        return;
    ++report.retestedUnitCount;
    keep(report.retestedUnits, unit, Report::maxRetestedUnits);
}
