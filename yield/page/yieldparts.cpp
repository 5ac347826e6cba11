// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/figures/timeline.h"
#include "yield/logs/attemptrules.h"
#include "yield/logs/controlnames.h"
#include "yield/page/chart.h"
#include "yield/page/figuretext.h"
#include "yield/page/html.h"
#include "yield/page/parts.h"

#include <QLocale>
#include <QStringList>

#include <algorithm>

using figuretext::count;
using figuretext::ifAny;
using figuretext::share;
using html::Cell;
using html::Cells;

namespace
{
/// "1 minute", "25 minutes", "3 hours", "4 days": whole ones, 2 days or 2 hours and more.
QString duration(qint64 seconds)
{
    constexpr qint64 hour = 3600;
    const qint64 days = seconds / (24 * hour);
    if (days >= 2)
        return QString("%1 days").arg(days);
    if (seconds >= 2 * hour)
        return QString("%1 hours").arg(seconds / hour);
    const qint64 minutes = seconds / 60;
    return QString(minutes == 1 ? "%1 minute" : "%1 minutes").arg(minutes);
}

Cells ageCells(const StationAge& age)
{
    if (age.seconds < 0)
        return {{age.name, "name"}, {"no log yet", "bad"}, {"–"}};
    const QDate day = QDate::fromString(age.newestAt.left(10), Qt::ISODate);
    const QString moment =
        QLocale(QLocale::English).toString(day, QString("ddd d MMM ")) + age.newestAt.mid(11, 5);
    // So long a silence needs a person.
    const bool isLong = age.seconds > 24 * 60 * 60;
    return {{age.name, "name"},
            {isLong ? "nothing since " + moment : moment, isLong ? "bad" : "line"},
            {duration(age.seconds), "line"}};
}

/// The cells that tables of days, weeks and stations share.
Cells yieldCells(const Tally& tally, const Limits& limits)
{
    if (tally.units == 0)
        return {{"–"}, {"–"}, {"–"}, {"–", "number"}};
    const Verdict verdict = verdictOn(tally, limits);
    const QString place = verdict == Verdict::Below   ? "▼ below "
                          : verdict == Verdict::Above ? "▲ above "
                                                      : "within ";
    return {{share(tally.passedFirst, tally.units), "line"},
            {place + figuretext::limits(limits, tally.units),
             verdict == Verdict::Below ? "bad" : "line"},
            {share(tally.passedLast, tally.units), "line"},
            {count(tally.endedFirst), "number"}};
}

Cells periodCells(const QString& name, const Tally& tally, const Limits& limits)
{
    return Cells{{name, "line"}, {count(tally.units), "number"}} + yieldCells(tally, limits);
}

QString dayName(const QDate& day, const QDate& today)
{
    const QString name = QLocale(QLocale::English).toString(day, QString("ddd d MMM yyyy"));
    if (day == today)
        return "Today so far, " + name;
    return day == today.addDays(-1) ? "Yesterday, " + name : name;
}

/// The control that most units of a station missed, or a dash.
QString worstControl(const StationReport& station)
{
    const auto worst = std::max_element(station.missed.cbegin(), station.missed.cend());
    if (*worst == 0)
        return "–";
    const auto componentNum = static_cast<int>(std::distance(station.missed.cbegin(), worst));
    return QString("%1, %2").arg(controlnames::control(componentNum), figuretext::units(*worst));
}

Cells stationCells(const StationReport& station, const Report& report)
{
    return Cells{{station.name, "name"},
                 {count(station.tally.units), "number"},
                 {count(station.tally.attempts), "number"},
                 {{}, {}, chart::station(station, report)}} +
           yieldCells(station.tally, station.limits) + Cells{{worstControl(station), "line"}};
}

/// number: of the attempts, from 1.
Cells numberCells(int number, const AttemptsByNumber& attempts)
{
    const QString endings[] = {"st", "nd", "rd"};
    const QString name = QString::number(number) + (number <= 3 ? endings[number - 1] : "th");
    return {{number == Report::maxNumbers ? name + " and later" : name},
            {count(attempts.attempts), "number"},
            {share(attempts.passed, attempts.attempts), "line"},
            {{}, {}, chart::share(attempts.passed, attempts.attempts)},
            {count(attempts.endedEarly), "number"}};
}
/// As many rows of a list go to paper; the style sheet leaves out the others.
constexpr int rowsOnPaper = 60;

Cell serialCell(const QString& serial)
{
    return {serial.isEmpty() ? "(no serial number)" : serial, "serial"};
}

/// The time of a log to the minute.
Cell timeCell(const QString& time)
{
    return {time.left(16).replace('T', ' '), "line"};
}

QString missedText(const Attempt& attempt)
{
    constexpr int mostControls = 3;
    const auto outcome = attemptrules::outcomeOf(attempt.marks, attempt.tests18);
    QStringList parts = controlnames::missed(outcome.missed);
    const int more = parts.size() - mostControls;
    if (more > 0)
        parts = parts.mid(0, mostControls) << QString("and %1 more").arg(more);
    if (outcome.endedAt)
        parts.prepend("ended early at " + controlnames::control(*outcome.endedAt));
    return parts.join("; ");
}

Cells openCells(const TestedUnit& unit)
{
    return {serialCell(unit.last.serial),
            timeCell(unit.last.testedAt),
            {unit.last.station, "name"},
            {count(unit.attempts), "number"},
            {missedText(unit.last)}};
}

Cells attemptCells(const Attempt& attempt)
{
    const auto outcome = attemptrules::outcomeOf(attempt.marks, attempt.tests18);
    const Cell bad{outcome.endedAt ? "ended early" : "not complete", "bad"};
    return {timeCell(attempt.testedAt),
            {attempt.station, "name"},
            outcome.isComplete() ? Cell{"complete", "good"} : bad};
}

Cells repeatedCells(const TestedUnit& unit)
{
    return Cells{serialCell(unit.last.serial), {count(unit.attempts), "number"}} +
           attemptCells(unit.first) + attemptCells(unit.last);
}
} // namespace

Parts yieldParts(const Report& report)
{
    const Timeline timeline = timelineOf(report.days, report.total);
    const auto cellsOfDay = [&](const DayReport& recent) {
        return periodCells(dayName(recent.day, report.request.now.date()), recent.tally,
                           recent.limits);
    };
    const auto cellsOfPeriod = [](const Timeline::Period& period) {
        return periodCells(period.name, period.tally, period.limits);
    };
    const auto cellsOfStation = [&](const StationReport& station) {
        return stationCells(station, report);
    };
    const auto cellsOfAttempts = [number = 0](const AttemptsByNumber& attempts) mutable {
        return numberCells(++number, attempts);
    };
    return {{"ages", html::rows(report.ages, ageCells)},
            {"recentDays", html::rows(report.recentDays, cellsOfDay)},
            {"offAxis", ifAny(report.offAxis.units, figuretext::units)},
            {"period", timeline.unit},
            {"timeline", chart::timeline(timeline, report.total)},
            {"periods", html::rows(timeline.periods, cellsOfPeriod)},
            {"stationAxis", QString::number(chart::axisBegin(report))},
            {"stations", html::rows(report.stations, cellsOfStation)},
            {"numbers", html::rows(report.attemptsByNumber, cellsOfAttempts)}};
}

Parts unitParts(const Report& report)
{
    const int open = report.total.units - report.total.passedLast;
    const int openRows = report.openUnits.size();
    const int repeatedRows = report.repeatedUnits.size();
    return {{"open", ifAny(open, figuretext::units)},
            {"openRows", html::rows(report.openUnits, openCells)},
            {"moreOpen", ifAny(open - openRows, count)},
            {"longOpen", ifAny(openRows > rowsOnPaper ? openRows : 0, count)},
            {"repeated", ifAny(report.repeatedUnitCount, figuretext::units)},
            {"repeatedRows", html::rows(report.repeatedUnits, repeatedCells)},
            {"moreRepeated", ifAny(report.repeatedUnitCount - repeatedRows, count)},
            {"longRepeated", ifAny(repeatedRows > rowsOnPaper ? repeatedRows : 0, count)}};
}
