// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/figures/timeline.h"
#include "yield/logs/controlnames.h"
#include "yield/page/tables.h"

#include <QJsonObject>
#include <QLocale>

#include <algorithm>

namespace
{
constexpr qint64 hourSeconds = 60 * 60;
constexpr qint64 daySeconds = 24 * hourSeconds;

const Cell empty{"–", {}};

Cell limitsCell(const Tally& part, const Tally& all)
{
    const QStringList positions{"below LCL", "within", "above UCL"};
    const QStringList prefixes{"▼ below LCL, ", "within ", "▲ above UCL, "};
    const ControlLimits limits = controlLimits(part.units, all);
    const Position position = limits.positionOf(part.passedFirst);
    const auto index = static_cast<int>(position);
    const QString range = cells::percentText(limits.lower, part.units) + " to " +
                          cells::percentText(limits.upper, part.units);
    const QJsonObject value{{"lcl", cells::ratio(limits.lower, part.units)},
                            {"ucl", cells::ratio(limits.upper, part.units)},
                            {"position", positions.at(index)}};
    return {prefixes.at(index) + range, value, position == Position::BelowLcl ? "bad" : "line"};
}

/// all: the units of the page.
Row yieldFigures(const Tally& tally, const Tally& all)
{
    return {{"first_pass_yield", cells::share(tally.passedFirst, tally.units)},
            {"control_limits", tally.units == 0 ? empty : limitsCell(tally, all)},
            {"final_yield", cells::share(tally.passedLast, tally.units)},
            {"aborted", cells::count(tally.abortedFirst)}};
}

/// begin: the first day of the period.
Row periodFigures(const QString& name, const QDate& begin, const Tally& tally, const Tally& all)
{
    return Row{{"first_tested", {name, begin.toString(Qt::ISODate), "line"}},
               {"units", cells::count(tally.units)}} +
           yieldFigures(tally, all);
}

/// "2 min 35 s", "1 h 0 min 12 s".
QString durationText(qint64 seconds)
{
    const qint64 hours = seconds / hourSeconds;
    const QString hoursText = hours > 0 ? cells::countText(static_cast<int>(hours)) + " h " : "";
    return hoursText + QString("%1 min %2 s").arg(seconds / 60 % 60).arg(seconds % 60);
}

Cell testTimeCell(const TestTimes& times)
{
    if (!times.medianSeconds)
        return {"–", {}, "line"};
    const QJsonObject value{{"seconds", *times.medianSeconds}, {"attempts", times.attempts}};
    return {durationText(qRound(*times.medianSeconds)), value, "line",
            cells::countText(times.attempts) + " attempts"};
}

Row lastLogFigures(const LastLog& lastLog, const QDateTime& now)
{
    const Cell station = cells::station(lastLog.station);
    if (lastLog.testedAt.isEmpty())
        return {
            {"station", station}, {"tested_at", {"no log yet", {}, "bad"}}, {"age_seconds", empty}};
    // Both as UTC: the difference on the wall clock.
    const auto time = QDateTime::fromString(lastLog.testedAt + 'Z', Qt::ISODate);
    const qint64 age = time.secsTo({now.date(), now.time(), Qt::UTC});
    const QString text = QLocale::c().toString(time, QString("ddd d MMM hh:mm"));
    const Cell timeCell = age > daySeconds ? Cell{"no log since " + text, lastLog.testedAt, "bad"}
                                           : Cell{text, lastLog.testedAt, "line"};
    return {{"station", station},
            {"tested_at", timeCell},
            {"age_seconds", {durationText(age), age, "line"}}};
}

/// The control that failed most often, the first of several.
Cell topFailureCell(const QVector<int>& failed)
{
    const auto top = std::max_element(failed.cbegin(), failed.cend());
    if (*top == 0)
        return empty;
    const auto componentNum = static_cast<int>(std::distance(failed.cbegin(), top));
    return {controlnames::control(componentNum) + ", " + cells::unitsText(*top),
            QJsonObject{{"component", componentNum}, {"failed_units", *top}}, "line"};
}
} // namespace

Rows tables::lastLogs(const Report& report)
{
    Rows rows;
    for (const LastLog& lastLog : report.request.lastLogs)
        rows.append(lastLogFigures(lastLog, report.request.now));
    return rows;
}

Rows tables::recentDays(const Report& report)
{
    constexpr int maxDays = 8;
    const QStringList prefixes{"Today so far, ", "Yesterday, "};
    Rows rows;
    for (int ago = 0; ago < maxDays; ++ago) {
        const QDate date = report.request.now.date().addDays(-ago);
        const QString name = QLocale::c().toString(date, QString("ddd d MMM yyyy"));
        if (report.request.includes(date))
            rows.append(periodFigures(prefixes.value(ago) + name, date, report.days.value(date),
                                      report.total));
    }
    return rows;
}

Row tables::totals(const Report& report)
{
    const Tally& total = report.total;
    return {{"units", cells::count(total.units)},
            {"attempts", cells::count(total.attempts)},
            {"first_pass_yield", cells::share(total.passedFirst, total.units)},
            {"final_yield", cells::share(total.passedLast, total.units)},
            {"aborted", cells::share(total.abortedFirst, total.units)},
            {"false_failures", cells::share(report.falseFailures, report.failedAttempts)},
            {"median_test_time", testTimeCell(report.testTimes)}};
}

Rows tables::trend(const Report& report)
{
    Rows rows;
    for (const Timeline::Period& period : timelineOf(report.days).periods)
        rows.append(periodFigures(period.name, period.begin, period.tally, report.total));
    return rows;
}

Rows tables::stations(const Report& report)
{
    Rows rows;
    for (auto each = report.stations.cbegin(); each != report.stations.cend(); ++each)
        rows.append(Row{{"station", cells::station(each.key())},
                        {"units", cells::count(each->tally.units)},
                        {"attempts", cells::count(each->tally.attempts)}} +
                    yieldFigures(each->tally, report.total) +
                    Row{{"median_test_time", testTimeCell(each->testTimes)},
                        {"top_failure", topFailureCell(each->failed)}});
    return rows;
}
