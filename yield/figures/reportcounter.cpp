// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/figures/reportcounter.h"

#include "yield/logs/walltime.h"

#include <algorithm>
#include <tuple>

namespace
{
constexpr qint64 falseFailureSeconds = 3600;

/// The day in a time, or of a date: yyyy-MM-dd.
QString dayOf(const QString& time)
{
    return time.left(10);
}

QString dayOf(const QDate& date)
{
    return date.toString(Qt::ISODate);
}

Result resultOf(const attemptrules::Outcome& outcome)
{
    if (outcome.endedAt)
        return Result::EndedEarly;
    return outcome.isComplete() ? Result::Passed : Result::Failed;
}

bool hasMoreAttempts(const RepeatedUnit& a, const RepeatedUnit& b)
{
    return std::tie(b.attempts, b.lastTestedAt, a.serial) <
           std::tie(a.attempts, a.lastTestedAt, b.serial);
}

bool isNewer(const OpenUnit& a, const OpenUnit& b)
{
    return std::tie(b.lastTestedAt, a.serial) < std::tie(a.lastTestedAt, b.serial);
}

/// Sorts and shortens a list.
template <class Item, class IsBefore>
void keepFirst(QVector<Item>& items, int most, IsBefore isBefore)
{
    std::sort(items.begin(), items.end(), isBefore);
    items.resize(std::min(most, items.size()));
}

OpenUnit openUnit(const RepeatedUnit& unit, const attemptrules::Outcome& last)
{
    OpenUnit open{unit.serial, unit.attempts, unit.lastTestedAt, unit.lastStation, 0,
                  {},          last.endedAt};
    int componentNum = -1;
    for (const auto& band : last.missed) {
        if (band.componentNum != componentNum) {
            componentNum = band.componentNum;
            if (++open.missedControlCount <= OpenUnit::maxMissedControls)
                open.missed.append(MissedControl{componentNum, {}});
        }
        if (open.missedControlCount <= OpenUnit::maxMissedControls)
            open.missed.last().bands.append(band.band);
    }
    return open;
}
} // namespace

ReportCounter::ReportCounter(const ReportRequest& request)
{
    report.request = request;
    for (const QString& pattern : request.without)
        without.emplace_back(pattern);
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c)
        report.controls.at(static_cast<std::size_t>(c)).missedBands.resize(bandmarks::bandCount(c));
    asked = {dayOf(request.since), dayOf(request.until)};
    axis = {dayOf(QDate(2000, 1, 1)), dayOf(request.now.date().addDays(1))};
}

void ReportCounter::add(const Attempt& attempt)
{
    report.databaseIsEmpty = false;
    if (unit.ends.attempts == 0 || unit.ends.serial != attempt.serial) {
        finishUnit();
        beginUnit(attempt);
    }
    RepeatedUnit& ends = unit.ends;
    ++ends.attempts;
    if (!unit.isCounted)
        return;
    unit.last = attemptrules::outcomeOf(attempt.marks, attempt.tests18);
    const Result result = resultOf(unit.last);
    if (ends.attempts == 1) {
        ends.firstResult = result;
        countControls(attempt);
    }
    countNumber(result);
    countFailure(attempt, result);
    ends.lastTestedAt = attempt.testedAt;
    ends.lastStation = attempt.station;
    ends.lastResult = result;
}

Report ReportCounter::finish()
{
    finishUnit();
    keepFirst(report.openUnits, Report::maxOpenUnits, isNewer);
    keepFirst(report.repeatedUnits, Report::maxRepeatedUnits, hasMoreAttempts);
    for (auto day = days.cbegin(); day != days.cend(); ++day)
        report.days.insert(QDate::fromString(day.key(), Qt::ISODate), day.value());
    for (StationReport station : std::as_const(stations)) {
        station.limits = limitsOf(station.tally.units, report.total);
        report.stations.append(station);
    }
    addRecentDays();
    addAges();
    return report;
}

bool ReportCounter::Days::hold(const QString& day) const
{
    return (first.isEmpty() || day >= first) && (last.isEmpty() || day <= last);
}

void ReportCounter::beginUnit(const Attempt& first)
{
    const ReportRequest& request = report.request;
    unit = Unit();
    unit.ends.serial = first.serial;
    unit.ends.firstTestedAt = first.testedAt;
    unit.ends.firstStation = first.station;
    if (!asked.hold(dayOf(first.testedAt)) ||
        (!request.station.isEmpty() && request.station != first.station))
        return;
    unit.isCounted =
        std::none_of(without.begin(), without.end(),
                     [&](const SerialPattern& pattern) { return pattern.matches(first.serial); });
    if (!unit.isCounted)
        ++report.leftOut;
}

void ReportCounter::countControls(const Attempt& first)
{
    const int end = unit.last.endedAt.value_or(roster::componentCount);
    for (int c = roster::firstComponent; c < end; ++c)
        if (attemptrules::isTested(c, first.tests18))
            ++controlOf(c).units;
    if (unit.last.endedAt)
        ++controlOf(end).endedHere;
    int componentNum = -1;
    for (const auto& band : unit.last.missed) {
        ControlMisses& control = controlOf(band.componentNum);
        ++control.missedBands[band.band];
        if (band.componentNum == componentNum)
            continue;
        componentNum = band.componentNum;
        ++control.missed;
        ++stations[first.station].missed.at(static_cast<std::size_t>(componentNum));
    }
}

void ReportCounter::countNumber(Result result)
{
    const int index = std::min(unit.ends.attempts, Report::maxNumbers) - 1;
    if (index == report.attemptsByNumber.size())
        report.attemptsByNumber.append(AttemptsByNumber());
    AttemptsByNumber& number = report.attemptsByNumber[index];
    ++number.attempts;
    number.passed += result == Result::Passed ? 1 : 0;
    number.endedEarly += result == Result::EndedEarly ? 1 : 0;
}

void ReportCounter::countFailure(const Attempt& attempt, Result result)
{
    if (result == Result::EndedEarly)
        return;
    FalseFailures& failures = report.falseFailures;
    if (!unit.failedAt.isEmpty() && unit.failedAtStation == attempt.station &&
        walltime::secondsBetween(unit.failedAt, attempt.testedAt) <= falseFailureSeconds) {
        ++failures.retested;
        failures.passed += result == Result::Passed ? 1 : 0;
    }
    unit.failedAt.clear();
    if (result == Result::Failed) {
        ++failures.failed;
        unit.failedAt = attempt.testedAt;
        unit.failedAtStation = attempt.station;
    }
}

void ReportCounter::finishUnit()
{
    if (!unit.isCounted)
        return;
    const RepeatedUnit& ends = unit.ends;
    const Tally tally{1, ends.attempts, ends.firstResult == Result::Passed ? 1 : 0,
                      ends.lastResult == Result::Passed ? 1 : 0,
                      ends.firstResult == Result::EndedEarly ? 1 : 0};
    report.total += tally;
    StationReport& station = stations[ends.firstStation];
    station.name = ends.firstStation;
    station.tally += tally;
    const QString day = dayOf(ends.firstTestedAt);
    (axis.hold(day) ? days[day] : report.offAxis) += tally;

    // Shortened now and then, so that neither the lists nor the time to sort them grow.
    constexpr int slack = 4;
    if (ends.lastResult != Result::Passed)
        report.openUnits.append(openUnit(ends, unit.last));
    if (report.openUnits.size() == slack * Report::maxOpenUnits)
        keepFirst(report.openUnits, Report::maxOpenUnits, isNewer);
    if (ends.attempts > 1) {
        ++report.repeatedUnitCount;
        report.repeatedUnits.append(ends);
    }
    if (report.repeatedUnits.size() == slack * Report::maxRepeatedUnits)
        keepFirst(report.repeatedUnits, Report::maxRepeatedUnits, hasMoreAttempts);
}

void ReportCounter::addRecentDays()
{
    for (int ago = 0; ago < Report::recentDayCount; ++ago) {
        const QDate day = report.request.now.date().addDays(-ago);
        const Tally tally = report.days.value(day);
        if (asked.hold(dayOf(day)))
            report.recentDays.append({day, tally, limitsOf(tally.units, report.total)});
    }
}

void ReportCounter::addAges()
{
    const ReportRequest& request = report.request;
    const QString now = request.now.toString("yyyy-MM-ddTHH:mm:ss");
    for (const StationNews& news : request.news) {
        if (!request.station.isEmpty() && request.station != news.station)
            continue;
        StationAge age{news.station, news.newestAt, -1};
        if (!news.newestAt.isEmpty())
            age.seconds = std::max(qint64{0}, walltime::secondsBetween(news.newestAt, now));
        report.ages.append(age);
    }
    std::sort(report.ages.begin(), report.ages.end(),
              [](const StationAge& a, const StationAge& b) { return a.name < b.name; });
}

ControlMisses& ReportCounter::controlOf(int componentNum)
{
    return report.controls.at(static_cast<std::size_t>(componentNum));
}
