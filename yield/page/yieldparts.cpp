// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/figures/timeline.h"
#include "yield/logs/controlnames.h"
#include "yield/page/chart.h"
#include "yield/page/figuretext.h"
#include "yield/page/html.h"
#include "yield/page/parts.h"

#include <algorithm>

using figuretext::count;
using figuretext::share;

namespace
{
/// How long a station may be silent before the page points at it, in seconds.
constexpr qint64 longSilence = 24 * 60 * 60;

void writeAges(Html& html, const Report& report)
{
    for (const StationAge& age : report.ages) {
        const QString moment = figuretext::moment(age.newestAt);
        Html::Row row = html.row();
        row.cell(age.name, "name");
        if (age.seconds < 0)
            row.cell("no log yet", "bad").cell("–");
        else if (age.seconds > longSilence)
            row.cell("nothing since " + moment, "bad")
                .cell(figuretext::duration(age.seconds), "line");
        else
            row.cell(moment, "line").cell(figuretext::duration(age.seconds), "line");
    }
}

/// The cells that tables of days, weeks and stations share.
void writeYieldCells(Html::Row& row, const Tally& tally, const Limits& limits)
{
    if (tally.units == 0) {
        row.cell("–").cell("–").cell("–").number("–");
        return;
    }
    const Verdict verdict = verdictOn(tally, limits);
    row.cell(share(tally.passedFirst, tally.units), "line")
        .cell(figuretext::verdict(verdict) + ' ' + figuretext::limits(limits, tally.units),
              verdict == Verdict::Below ? "bad" : "line")
        .cell(share(tally.passedLast, tally.units), "line")
        .number(count(tally.endedFirst));
}

void writeRecentDays(Html& html, const Report& report)
{
    const QDate today = report.request.now.date();
    for (const DayReport& recent : report.recentDays) {
        QString name = figuretext::day(recent.day);
        if (recent.day == today)
            name = "Today so far, " + name;
        if (recent.day == today.addDays(-1))
            name = "Yesterday, " + name;
        Html::Row row = html.row();
        row.cell(name, "line").number(count(recent.tally.units));
        writeYieldCells(row, recent.tally, recent.limits);
    }
}

void writeOffAxis(Html& html, const Report& report)
{
    if (report.offAxis.units > 0)
        html.text(figuretext::units(report.offAxis.units) +
                  " with a first attempt before the year 2000 or more than a day after this page "
                  "was made: the clock of a station is wrong. They count everywhere but here.");
}

void writePeriodName(Html& html, const Report& report)
{
    html.text(timelineOf(report.days, report.total).unit);
}

void writeTimeline(Html& html, const Report& report)
{
    if (!report.days.isEmpty())
        chart::drawTimeline(html, timelineOf(report.days, report.total), report.total);
}

void writePeriods(Html& html, const Report& report)
{
    const Timeline timeline = timelineOf(report.days, report.total);
    for (const Timeline::Period& period : timeline.periods) {
        Html::Row row = html.row();
        row.cell(period.name, "line").number(count(period.tally.units));
        writeYieldCells(row, period.tally, period.limits);
    }
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

void writeStationAxis(Html& html, const Report& report)
{
    html.text(QString::number(chart::axisBegin(report)));
}

void writeStations(Html& html, const Report& report)
{
    for (const StationReport& station : report.stations) {
        Html::Row row = html.row();
        row.cell(station.name, "name")
            .number(count(station.tally.units))
            .number(count(station.tally.attempts));
        {
            const auto cell = html.open("td");
            chart::drawStation(html, station, report.total, chart::axisBegin(report));
        }
        writeYieldCells(row, station.tally, station.limits);
        row.cell(worstControl(station), "line");
    }
}

void writeNumbers(Html& html, const Report& report)
{
    const QString endings[] = {"st", "nd", "rd"};
    for (int i = 0; i < report.attemptsByNumber.size(); ++i) {
        const AttemptsByNumber& attempts = report.attemptsByNumber.at(i);
        const QString name = QString::number(i + 1) + (i < 3 ? endings[i] : "th");
        Html::Row row = html.row();
        row.cell(i + 1 == Report::maxNumbers ? name + " and later" : name)
            .number(count(attempts.attempts))
            .cell(share(attempts.passed, attempts.attempts), "line");
        {
            const auto cell = html.open("td");
            chart::drawShare(html, attempts.passed, attempts.attempts);
        }
        row.number(count(attempts.endedEarly));
    }
}
} // namespace

Parts yieldParts()
{
    return {{"ages", writeAges},
            {"recentDays", writeRecentDays},
            {"offAxis", writeOffAxis},
            {"period", writePeriodName},
            {"timeline", writeTimeline},
            {"periods", writePeriods},
            {"stationAxis", writeStationAxis},
            {"stations", writeStations},
            {"numbers", writeNumbers}};
}
