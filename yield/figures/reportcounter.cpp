// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/figures/reportcounter.h"

#include <algorithm>
#include <tuple>

namespace
{
constexpr qint64 falseFailureSeconds = 3600;

/// A serial is no path, but Qt's wildcards end at a slash. So they get to see a NUL instead: no
/// serial holds one.
QString withoutSlashes(QString text)
{
    return text.replace('/', QChar(QChar::Null));
}

bool hasMoreAttempts(const TestedUnit& a, const TestedUnit& b)
{
    return std::tie(b.attempts, b.last.testedAt, a.last.serial) <
           std::tie(a.attempts, a.last.testedAt, b.last.serial);
}

bool isNewer(const TestedUnit& a, const TestedUnit& b)
{
    return std::tie(b.last.testedAt, a.last.serial) < std::tie(a.last.testedAt, b.last.serial);
}

using IsBefore = bool (*)(const TestedUnit&, const TestedUnit&);

void keepFirst(QVector<TestedUnit>& units, int most, IsBefore isBefore)
{
    std::sort(units.begin(), units.end(), isBefore);
    units.resize(std::min(most, units.size()));
}

/// Shortens the list now and then, so that neither it nor the time to sort it grows with the units.
void append(QVector<TestedUnit>& units, const TestedUnit& unit, int most, IsBefore isBefore)
{
    constexpr int slack = 4;
    units.append(unit);
    if (units.size() == slack * most)
        keepFirst(units, most, isBefore);
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
    for (const QString& pattern : request.without)
        without.push_back(serialPattern(pattern));
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c)
        report.controls.at(static_cast<std::size_t>(c)).missedBands.resize(bandmarks::bandCount(c));
}

void ReportCounter::add(const Attempt& attempt)
{
    report.databaseIsEmpty = false;
    if (unit.attempts == 0 || unit.first.serial != attempt.serial) {
        finishUnit();
        beginUnit(attempt);
    }
    ++unit.attempts;
    if (!unit.isCounted)
        return;
    unit.last = attempt;
    unit.lastOutcome = attemptrules::outcomeOf(attempt.marks, attempt.tests18);
    if (unit.attempts == 1) {
        unit.firstOutcome = unit.lastOutcome;
        countControls();
    }
    countNumber();
    countFailure();
}

Report ReportCounter::finish()
{
    finishUnit();
    keepFirst(report.openUnits, Report::maxOpenUnits, isNewer);
    keepFirst(report.repeatedUnits, Report::maxRepeatedUnits, hasMoreAttempts);
    for (StationReport station : std::as_const(stations)) {
        station.limits = limitsOf(station.tally.units, report.total);
        report.stations.append(station);
    }
    addRecentDays();
    addAges();
    return report;
}

void ReportCounter::beginUnit(const Attempt& first)
{
    unit = Unit();
    unit.first = first;
    unit.day = QDate::fromString(first.testedAt.left(10), Qt::ISODate);
    if (!isAsked(unit.day) || !isAsked(first.station))
        return;
    const QString serial = withoutSlashes(first.serial);
    unit.isCounted = std::none_of(without.begin(), without.end(), [&](const auto& pattern) {
        return pattern.match(serial).hasMatch();
    });
    if (!unit.isCounted)
        ++report.leftOut;
}

void ReportCounter::countControls()
{
    const int end = unit.lastOutcome.endedAt.value_or(roster::componentCount);
    for (int c = roster::firstComponent; c < end; ++c)
        if (attemptrules::isTested(c, unit.first.tests18))
            ++controlOf(c).units;
    if (unit.lastOutcome.endedAt)
        ++controlOf(end).endedHere;
    int componentNum = -1;
    for (const auto& band : unit.lastOutcome.missed) {
        ControlMisses& control = controlOf(band.componentNum);
        ++control.missedBands[band.band];
        if (band.componentNum == componentNum)
            continue;
        componentNum = band.componentNum;
        ++control.missed;
        ++stations[unit.first.station].missed.at(static_cast<std::size_t>(componentNum));
    }
}

void ReportCounter::countNumber()
{
    const int index = std::min(unit.attempts, Report::maxNumbers) - 1;
    if (index == report.attemptsByNumber.size())
        report.attemptsByNumber.append(AttemptsByNumber());
    AttemptsByNumber& number = report.attemptsByNumber[index];
    ++number.attempts;
    if (unit.lastOutcome.isComplete())
        ++number.passed;
    else if (unit.lastOutcome.endedAt)
        ++number.endedEarly;
}

void ReportCounter::countFailure()
{
    if (unit.lastOutcome.endedAt)
        return;
    FalseFailures& failures = report.falseFailures;
    const bool passed = unit.lastOutcome.isComplete();
    if (unit.failure && unit.failure->station == unit.last.station &&
        attemptrules::secondsBetween(unit.failure->testedAt, unit.last.testedAt) <=
            falseFailureSeconds) {
        ++failures.retested;
        failures.passed += passed ? 1 : 0;
    }
    unit.failure.reset();
    if (!passed) {
        ++failures.failed;
        unit.failure = unit.last;
    }
}

void ReportCounter::finishUnit()
{
    if (!unit.isCounted)
        return;
    const Tally tally{1, unit.attempts, unit.firstOutcome.isComplete() ? 1 : 0,
                      unit.lastOutcome.isComplete() ? 1 : 0, unit.firstOutcome.endedAt ? 1 : 0};
    report.total += tally;
    StationReport& station = stations[unit.first.station];
    station.name = unit.first.station;
    station.tally += tally;
    const bool isOnAxis =
        unit.day.year() >= 2000 && unit.day <= report.request.now.date().addDays(1);
    (isOnAxis ? report.days[unit.day] : report.offAxis) += tally;

    if (!unit.lastOutcome.isComplete())
        append(report.openUnits, unit, Report::maxOpenUnits, isNewer);
    if (unit.attempts == 1)
        return;
    ++report.repeatedUnitCount;
    append(report.repeatedUnits, unit, Report::maxRepeatedUnits, hasMoreAttempts);
}

bool ReportCounter::isAsked(const QDate& day) const
{
    const QDate& until = report.request.until; // an invalid date lies before every other
    return day >= report.request.since && (!until.isValid() || day <= until);
}

bool ReportCounter::isAsked(const QString& station) const
{
    return report.request.station.isEmpty() || station == report.request.station;
}

void ReportCounter::addRecentDays()
{
    for (int ago = 0; ago < Report::recentDayCount; ++ago) {
        const QDate day = report.request.now.date().addDays(-ago);
        const Tally tally = report.days.value(day);
        if (isAsked(day))
            report.recentDays.append({day, tally, limitsOf(tally.units, report.total)});
    }
}

void ReportCounter::addAges()
{
    const QString now = report.request.now.toString("yyyy-MM-ddTHH:mm:ss");
    for (const StationNews& news : report.request.news) {
        if (!isAsked(news.station))
            continue;
        StationAge age{news.station, news.newestAt, -1};
        if (!news.newestAt.isEmpty())
            age.seconds = std::max(qint64{0}, attemptrules::secondsBetween(news.newestAt, now));
        report.ages.append(age);
    }
}

ControlMisses& ReportCounter::controlOf(int componentNum)
{
    return report.controls.at(static_cast<std::size_t>(componentNum));
}
