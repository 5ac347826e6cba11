// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/figures/reportcounter.h"

#include <algorithm>
#include <set>
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

QDate dayOf(const Attempt& attempt)
{
    return QDate::fromString(attempt.testedAt.left(10), Qt::ISODate);
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

/// units: a heap whose top is the first one that goes when there are more than most.
template <typename IsBefore>
void keep(QVector<TestedUnit>& units, const TestedUnit& unit, int most, IsBefore isBefore)
{
    units.append(unit);
    std::push_heap(units.begin(), units.end(), isBefore);
    if (units.size() <= most)
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
    auto& news = report.request.lastLogs;
    const auto isOther = [&](const LastLog& each) { return !request.includes(each.station); };
    news.erase(std::remove_if(news.begin(), news.end(), isOther), news.end());
    for (const QString& pattern : request.without)
        without.push_back(serialPattern(pattern));
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
}

Report ReportCounter::finish()
{
    finishUnit();
    std::sort_heap(report.openUnits.begin(), report.openUnits.end(), isNewer);
    std::sort_heap(report.repeatedUnits.begin(), report.repeatedUnits.end(), hasMoreAttempts);
    return report;
}

bool ReportCounter::isCounted(const Attempt& first)
{
    if (!report.request.includes(dayOf(first)) || !report.request.includes(first.station))
        return false;
    const QString serial = withoutSlashes(first.serial);
    const bool isLeftOut = std::any_of(without.begin(), without.end(), [&](const auto& pattern) {
        return pattern.match(serial).hasMatch();
    });
    report.leftOut += isLeftOut ? 1 : 0;
    return !isLeftOut;
}

void ReportCounter::countFirst(const attemptrules::Outcome& outcome)
{
    unit.tally.units = 1;
    unit.tally.passedFirst = outcome.hasPassed() ? 1 : 0;
    unit.tally.endedFirst = outcome.abortedAt ? 1 : 0;
    StationReport& station = report.stations[unit.first.station];
    station.name = unit.first.station;
    const int end = outcome.abortedAt.value_or(report.controls.size());
    for (int c = roster::firstComponent; c < end; ++c)
        if (attemptrules::isTested(c, unit.first.tests18))
            ++report.controls[c].units;
    if (outcome.abortedAt)
        ++report.controls[end].endedHere;
    std::set<int> missed;
    for (const auto& band : outcome.missed) {
        ++report.controls[band.componentNum].missedBands[band.band];
        missed.insert(band.componentNum);
    }
    for (const int c : missed) {
        ++report.controls[c].missed;
        ++station.missed[c];
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
    number.endedEarly += outcome.abortedAt ? 1 : 0;
}

void ReportCounter::countFailure(const attemptrules::Outcome& outcome)
{
    if (outcome.abortedAt)
        return;
    FalseFailures& failures = report.falseFailures;
    const bool passed = outcome.hasPassed();
    if (passed && unit.failure && unit.failure->station == unit.last.station &&
        attemptrules::secondsBetween(unit.failure->testedAt, unit.last.testedAt) <=
            falseFailureSeconds)
        ++failures.passedNext;
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
    report.total += unit.tally;
    report.stations[unit.first.station].tally += unit.tally;
    const QDate day = dayOf(unit.first);
    const bool isOnAxis = day.year() >= 2000 && day <= report.request.now.date().addDays(1);
    (isOnAxis ? report.days[day] : report.offAxis) += unit.tally;

    if (unit.tally.passedLast == 0)
        keep(report.openUnits, unit, Report::maxOpenUnits, isNewer);
    if (unit.attempts == 1)
        return;
    ++report.repeatedUnitCount;
    keep(report.repeatedUnits, unit, Report::maxRepeatedUnits, hasMoreAttempts);
}
