// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/figures/timeline.h"
#include "yield/logs/controlnames.h"
#include "yield/page/tables.h"

#include <QJsonObject>
#include <QLocale>

namespace
{
const QVector<Column> yieldColumns{{"First-pass yield", "first_pass_yield"},
                                   {"Control limits", "control_limits"},
                                   {"Final yield so far", "final_yield"},
                                   {"Aborted", "aborted"}};
const QVector<Column> periodColumns =
    QVector<Column>{{"First tested", "first_tested"}, {"Units", "units"}} + yieldColumns;

/// all: the units of the page.
Row yieldCells(const Tally& tally, const Tally& all)
{
    if (tally.units == 0)
        return {cells::empty(), cells::empty(), cells::empty(), {"–", {}, "number"}};
    return {cells::share(tally.passedFirst, tally.units), cells::controlLimits(tally, all),
            cells::share(tally.passedLast, tally.units), cells::count(tally.abortedFirst)};
}

/// begin: the first day of the period.
Row periodRow(const QString& name, const QDate& begin, const Tally& tally, const Tally& all)
{
    return Row{{name, begin.toString(Qt::ISODate), "line"}, cells::count(tally.units)} +
           yieldCells(tally, all);
}

/// Whole minutes; from 2 hours or 2 days on whole hours or days.
QString ageText(qint64 seconds)
{
    constexpr qint64 hour = 3600;
    constexpr qint64 day = 24 * hour;
    if (seconds >= 2 * day)
        return QString("%1 days").arg(seconds / day);
    if (seconds >= 2 * hour)
        return QString("%1 hours").arg(seconds / hour);
    return QString("%1 min").arg(seconds / 60);
}

Row lastLogRow(const LastLog& lastLog, const Report& report)
{
    const auto age = report.ageOf(lastLog);
    if (!age)
        return {cells::station(lastLog.station), {"no log yet", {}, "bad"}, cells::empty()};
    const auto time = QDateTime::fromString(lastLog.testedAt + 'Z', Qt::ISODate);
    const QString text = QLocale::c().toString(time, QString("ddd d MMM hh:mm"));
    const Cell timeCell = report.needsAttention(lastLog)
                              ? Cell{"no log since " + text, lastLog.testedAt, "bad"}
                              : Cell{text, lastLog.testedAt, "line"};
    return {cells::station(lastLog.station), timeCell, {ageText(*age), *age, "line"}};
}

Cell topFailureCell(const StationReport& station)
{
    const auto top = station.topFailure();
    if (!top)
        return cells::empty();
    return {controlnames::control(top->componentNum) + ", " + cells::unitsText(top->units),
            QJsonObject{{"component", top->componentNum}, {"failed_units", top->units}}, "line"};
}
} // namespace

Table tables::lastLogs(const Report& report)
{
    Table table{"Last log of each station",
                {{"Station", "station"}, {"Last log", "tested_at"}, {"Age", "age_seconds"}}};
    for (const LastLog& lastLog : report.request.lastLogs)
        table.rows.append(lastLogRow(lastLog, report));
    return table;
}

Table tables::recentDays(const Report& report)
{
    Table table{"Last days", periodColumns};
    for (const Report::Day& day : report.recentDays()) {
        const auto ago = day.date.daysTo(report.request.now.date());
        const QString prefix = ago == 0 ? "Today so far, " : ago == 1 ? "Yesterday, " : "";
        const QString date = QLocale::c().toString(day.date, QString("ddd d MMM yyyy"));
        table.rows.append(periodRow(prefix + date, day.date, day.tally, report.total));
    }
    return table;
}

Table tables::totals(const Report& report)
{
    const Tally& total = report.total;
    return {
        "Totals",
        {{"Units", "units"},
         {"Attempts", "attempts"},
         {"First-pass yield", "first_pass_yield"},
         {"Final yield so far", "final_yield"},
         {"Aborted", "aborted"},
         {"False failures", "false_failures"},
         {"Median test time", "median_test_time"}},
        {{cells::count(total.units), cells::count(total.attempts),
          cells::share(total.passedFirst, total.units), cells::share(total.passedLast, total.units),
          cells::share(total.abortedFirst, total.units),
          cells::share(report.falseFailures.passedNext, report.falseFailures.failed),
          cells::testTime(report.testTimes)}}};
}

Table tables::trend(const Report& report)
{
    Table table{"First-pass yield over time", periodColumns};
    for (const Timeline::Period& period : timelineOf(report.days).periods)
        table.rows.append(periodRow(period.name, period.begin, period.tally, report.total));
    return table;
}

Table tables::stations(const Report& report)
{
    Table table{
        "First-pass yield by station",
        QVector<Column>{{"Station", "station"}, {"Units", "units"}, {"Attempts", "attempts"}} +
            yieldColumns +
            QVector<Column>{{"Median test time", "median_test_time"},
                            {"Top failure", "top_failure"}}};
    for (const StationReport& station : report.stations)
        table.rows.append(Row{cells::station(station.name), cells::count(station.tally.units),
                              cells::count(station.tally.attempts)} +
                          yieldCells(station.tally, report.total) +
                          Row{cells::testTime(station.testTimes), topFailureCell(station)});
    return table;
}
