// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/tables.h"

#include "yield/figures/timeline.h"
#include "yield/logs/attemptrules.h"
#include "yield/logs/controlnames.h"

#include <QJsonObject>
#include <QLocale>

#include <algorithm>

namespace
{
constexpr qint64 daySeconds = 24 * 60 * 60;

Rows lastLogs(const ReportRequest& request)
{
    Rows rows;
    for (const auto& [station, testedAt] : request.lastLogs) {
        if (!request.includes(station))
            continue;
        // Both as UTC: the difference on the wall clock.
        const auto time = QDateTime::fromString(testedAt + 'Z', Qt::ISODate);
        const qint64 age = time.secsTo({request.now.date(), request.now.time(), Qt::UTC});
        const QString text = QLocale::c().toString(time, QString("ddd d MMM hh:mm"));
        Cell timeCell{text, testedAt, "line"};
        Cell ageCell{cells::durationText(age), age, "line"};
        if (testedAt.isEmpty()) {
            timeCell = {"no log yet", {}, "bad"};
            ageCell = {"–", {}};
        } else if (age > daySeconds) {
            timeCell = {"no log since " + text, testedAt, "bad"};
        }
        rows.append({{"station", cells::station(station)},
                     {"tested_at", timeCell},
                     {"age_seconds", ageCell}});
    }
    return rows;
}

/// all: the units of the page.
Row yieldFigures(const Tally& tally, const Tally& all)
{
    return {{"first_pass_yield", cells::share(tally.passedFirst, tally.units)},
            {"control_limits", cells::limits(tally, all)},
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

Rows recentDays(const Report& report)
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

Rows trend(const Report& report)
{
    Rows rows;
    for (const Timeline::Period& period : timelineOf(report.days).periods)
        rows.append(periodFigures(period.name, period.begin, period.tally, report.total));
    return rows;
}

/// The control that failed most often, the first of several.
Cell topFailureCell(const QVector<int>& failed)
{
    const auto top = std::max_element(failed.cbegin(), failed.cend());
    if (*top == 0)
        return {"–", {}};
    const auto componentNum = static_cast<int>(std::distance(failed.cbegin(), top));
    return {controlnames::control(componentNum) + ", " + cells::unitsText(*top),
            QJsonObject{{"component", componentNum}, {"failed_units", *top}}, "line"};
}

Rows stations(const Report& report)
{
    Rows rows;
    for (auto each = report.stations.cbegin(); each != report.stations.cend(); ++each)
        rows.append(Row{{"station", cells::station(each.key())},
                        {"units", cells::count(each->tally.units)},
                        {"attempts", cells::count(each->tally.attempts)}} +
                    yieldFigures(each->tally, report.total) +
                    Row{{"median_test_time", cells::testTime(each->testTimes)},
                        {"top_failure", topFailureCell(each->failed)}});
    return rows;
}

Row controlFigures(const ControlFailures& control)
{
    return {{"component", cells::control(control.componentNum)},
            {"failed_units", cells::failedUnits(control)}};
}

Rows controls(const Report& report)
{
    Rows rows;
    for (const ControlFailures& control : report.controls)
        rows.append(controlFigures(control));
    return rows;
}

Rows pareto(const Report& report)
{
    Rows rows;
    const int all = report.failureCount;
    int sum = 0;
    for (const ControlFailures& control : report.failedControls) {
        sum += control.failed;
        rows.append(controlFigures(control) + Row{{"share", cells::percent(control.failed, all)},
                                                  {"cumulative", cells::percent(sum, all)}});
    }
    return rows;
}

/// Of the controls of the charts of missed bands.
Rows missedBands(const Report& report)
{
    Rows rows;
    for (const ControlFailures& control : report.topControls())
        for (int band = 0; band < control.missedBands.size(); ++band)
            rows.append({{"component", cells::control(control.componentNum)},
                         {"band", {controlnames::band(control.componentNum, band), band}},
                         {"failed_units", cells::count(control.missedBands.at(band))}});
    return rows;
}

Rows aborted(const Report& report)
{
    Rows rows;
    for (const ControlFailures& control : report.controls)
        if (control.aborted > 0)
            rows.append(
                {{"component", cells::control(control.componentNum)},
                 {"first_attempts", cells::share(control.aborted, report.total.abortedFirst)}});
    return rows;
}

Rows attemptsByNumber(const Report& report)
{
    Rows rows;
    for (const AttemptsByNumber& each : report.attemptsByNumber) {
        const int number = rows.size() + 1;
        const QString suffix = number == Report::maxNumbers ? " and later" : "";
        rows.append({{"number", {QString::number(number) + suffix, number}},
                     {"attempts", cells::count(each.attempts)},
                     {"passed", cells::share(each.passed, each.attempts)},
                     {"aborted", cells::count(each.aborted)}});
    }
    return rows;
}

Cell serialCell(const QString& serial)
{
    return {serial.isEmpty() ? "(no serial number)" : serial, serial, "serial"};
}

/// To the minute; the value has the whole time.
Cell timeCell(const QString& testedAt)
{
    return {testedAt.left(16).replace('T', ' '), testedAt, "line"};
}

/// Where the attempt was aborted, and the first controls that failed.
Cell failuresCell(const Attempt& attempt)
{
    constexpr int maxControls = 3;
    const auto outcome = attemptrules::outcomeOf(attempt.marks, attempt.tests18);
    QStringList parts = controlnames::missed(outcome.missed);
    const int more = parts.size() - maxControls;
    if (more > 0)
        parts = parts.mid(0, maxControls) << QString("and %1 more").arg(more);
    if (outcome.abortedAt)
        parts.prepend("aborted at " + controlnames::control(*outcome.abortedAt));
    return {parts.join("; "), parts.join("; ")};
}

Cell resultCell(const Attempt& attempt)
{
    const auto outcome = attemptrules::outcomeOf(attempt.marks, attempt.tests18);
    if (outcome.hasPassed())
        return {"passed", "passed", "good"};
    const QString result = outcome.abortedAt ? "aborted" : "failed";
    return {result, result, "bad"};
}

Rows notPassed(const Report& report)
{
    Rows rows;
    for (const auto& [testedAt, unit] : report.notPassedUnits)
        rows.append({{"serial", serialCell(unit.last.serial)},
                     {"tested_at", timeCell(testedAt)},
                     {"station", cells::station(unit.last.station)},
                     {"attempts", cells::count(unit.attempts)},
                     {"failures", failuresCell(unit.last)}});
    return rows;
}

Rows retested(const Report& report)
{
    Rows rows;
    for (const auto& [order, unit] : report.retestedUnits)
        rows.append({{"serial", serialCell(unit.last.serial)},
                     {"attempts", cells::count(unit.attempts)},
                     {"first_tested_at", timeCell(unit.first.testedAt)},
                     {"first_station", cells::station(unit.first.station)},
                     {"first_result", resultCell(unit.first)},
                     {"last_tested_at", timeCell(unit.last.testedAt)},
                     {"last_station", cells::station(unit.last.station)},
                     {"last_result", resultCell(unit.last)}});
    return rows;
}
} // namespace

QMap<QString, Rows> tables::all(const Report& report)
{
    return {{"last_logs", lastLogs(report.request)},
            {"recent_days", recentDays(report)},
            {"trend", trend(report)},
            {"stations", stations(report)},
            {"controls", controls(report)},
            {"pareto", pareto(report)},
            {"missed_bands", missedBands(report)},
            {"aborted", aborted(report)},
            {"attempts_by_number", attemptsByNumber(report)},
            {"not_passed", notPassed(report)},
            {"retested", retested(report)}};
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
            {"median_test_time", cells::testTime(report.testTimes)}};
}
