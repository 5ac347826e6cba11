// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/figures/timeline.h"
#include "yield/logs/attemptrules.h"
#include "yield/logs/controlnames.h"
#include "yield/page/chart.h"
#include "yield/page/figuretext.h"
#include "yield/page/markup.h"
#include "yield/page/parts.h"

#include <QLocale>

#include <algorithm>

using figuretext::count;
using figuretext::ifAny;
using figuretext::percent;
using figuretext::share;
using html::Cell;
using html::Cells;

namespace
{
/// "25 minutes", "3 hours", "4 days": whole ones, 2 hours or 2 days and more.
QString duration(qint64 seconds)
{
    constexpr qint64 hour = 3600;
    constexpr qint64 day = 24 * hour;
    if (seconds >= 2 * day)
        return QString("%1 days").arg(seconds / day);
    if (seconds >= 2 * hour)
        return QString("%1 hours").arg(seconds / hour);
    return QString("%1 min").arg(seconds / 60);
}

Cells ageCells(const LastLog& news, const QDateTime& now)
{
    if (news.testedAt.isEmpty())
        return {{news.station, "name"}, {"no log yet", "bad"}, {"–"}};
    const auto newest = QDateTime::fromString(news.testedAt + 'Z', Qt::ISODate);
    const QString moment = QLocale::c().toString(newest, QString("ddd d MMM hh:mm"));
    const qint64 age =
        attemptrules::secondsBetween(news.testedAt, now.toString("yyyy-MM-ddTHH:mm:ss"));
    // So long a silence needs a person.
    const bool isLong = age > 24 * 60 * 60;
    return {{news.station, "name"},
            isLong ? Cell{"nothing since " + moment, "bad"} : Cell{moment, "line"},
            {duration(age), "line"}};
}

/// The cells that tables of days, weeks and stations share; all: the units of the page.
Cells yieldCells(const Tally& tally, const Tally& all)
{
    if (tally.units == 0)
        return {{"–"}, {"–"}, {"–"}, {"–", "number"}};
    const Limits limits = limitsOf(tally.units, all);
    const Verdict verdict = verdictOn(tally, all);
    const QString place = verdict == Verdict::Below   ? "▼ below "
                          : verdict == Verdict::Above ? "▲ above "
                                                      : "within ";
    return {{share(tally.passedFirst, tally.units), "line"},
            {place + percent(limits.low, tally.units) + " to " + percent(limits.high, tally.units),
             verdict == Verdict::Below ? "bad" : "line"},
            {share(tally.passedLast, tally.units), "line"},
            {count(tally.endedFirst), "number"}};
}

Cells periodCells(const Timeline::Period& period, const Tally& all)
{
    return Cells{{period.name, "line"}, {count(period.tally.units), "number"}} +
           yieldCells(period.tally, all);
}

/// Today so far, yesterday and the days before it, days without units too, as far as they were
/// asked for.
QString recentDays(const Report& report)
{
    constexpr int mostDays = 8;
    const QDate today = report.request.now.date();
    QString rows;
    for (int ago = 0; ago < mostDays; ++ago) {
        const QDate day = today.addDays(-ago);
        const QString prefix = ago == 0 ? "Today so far, " : ago == 1 ? "Yesterday, " : "";
        const QString name = prefix + QLocale::c().toString(day, QString("ddd d MMM yyyy"));
        if (report.request.includes(day))
            rows += html::row(periodCells({ago, name, {}, report.days.value(day)}, report.total));
    }
    return rows;
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

Cells stationCells(const StationReport& station, const Tally& all)
{
    return Cells{{station.name, "name"},
                 {count(station.tally.units), "number"},
                 {count(station.tally.attempts), "number"}} +
           yieldCells(station.tally, all) + Cells{{worstControl(station), "line"}};
}

/// Stations as periods, with gaps between them: no line connects them. Names too long for their
/// places keep their ends, which tell them apart.
Timeline sideBySide(const QMap<QString, StationReport>& stations)
{
    constexpr int lettersOfAll = 120;
    const int letters = std::max(2, lettersOfAll / std::max(1, stations.size()));
    Timeline timeline{"station", {}, 2 * stations.size() - 1, letters};
    for (const StationReport& station : stations) {
        const QString& name = station.name;
        const QString label = name.size() <= letters ? name : "…" + name.right(letters - 1);
        timeline.periods.append({2 * timeline.periods.size(), name, label, station.tally});
    }
    return timeline;
}

QString numberRows(const QVector<AttemptsByNumber>& numbers)
{
    return html::rows(numbers, [i = 0](const AttemptsByNumber& each) mutable {
        ++i;
        return Cells{{QString::number(i) + (i == Report::maxNumbers ? " and later" : "")},
                     {count(each.attempts), "number"},
                     {share(each.passed, each.attempts), "line"},
                     {count(each.endedEarly), "number"}};
    });
}

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
    if (outcome.abortedAt)
        parts.prepend("ended early at " + controlnames::control(*outcome.abortedAt));
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
    const Cell bad{outcome.abortedAt ? "ended early" : "not complete", "bad"};
    return {timeCell(attempt.testedAt),
            {attempt.station, "name"},
            outcome.hasPassed() ? Cell{"complete", "good"} : bad};
}

Cells repeatedCells(const TestedUnit& unit)
{
    return Cells{serialCell(unit.last.serial), {count(unit.attempts), "number"}} +
           attemptCells(unit.first) + attemptCells(unit.last);
}
} // namespace

Parts yieldParts(const Report& report)
{
    const Timeline timeline = timelineOf(report.days);
    const int open = report.total.units - report.total.passedLast;
    const int repeated = report.repeatedUnitCount;
    return {{"ages", html::rows(report.request.lastLogs, ageCells, report.request.now)},
            {"recentDays", recentDays(report)},
            {"offAxis", ifAny(report.offAxis.units, figuretext::units)},
            {"period", timeline.unit},
            {"timeline", chart::timeline(timeline, report.total)},
            {"periods", html::rows(timeline.periods, periodCells, report.total)},
            {"stationsPicture", chart::timeline(sideBySide(report.stations), report.total)},
            {"stations", html::rows(report.stations, stationCells, report.total)},
            {"numbers", numberRows(report.attemptsByNumber)},
            {"open", ifAny(open, figuretext::units)},
            {"openRows", html::rows(report.openUnits, openCells)},
            {"moreOpen", ifAny(open - report.openUnits.size(), count)},
            {"repeated", ifAny(repeated, figuretext::units)},
            {"repeatedRows", html::rows(report.repeatedUnits, repeatedCells)},
            {"moreRepeated", ifAny(repeated - report.repeatedUnits.size(), count)}};
}
