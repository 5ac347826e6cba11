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
Row lastLogRow(const LastLog& lastLog, const QDateTime& now)
{
    constexpr qint64 daySeconds = 24 * 60 * 60;
    const Cell station = cells::station(lastLog.station);
    if (lastLog.testedAt.isEmpty())
        return {{"station", station},
                {"tested_at", {"no log yet", {}, "bad"}},
                {"age_seconds", cells::none()}};
    // Both as UTC: the difference on the wall clock.
    const auto time = QDateTime::fromString(lastLog.testedAt + 'Z', Qt::ISODate);
    const qint64 age = time.secsTo({now.date(), now.time(), Qt::UTC});
    const bool isOld = age > daySeconds;
    const QString text = QLocale::c().toString(time, QString("ddd d MMM hh:mm"));
    return {{"station", station},
            {"tested_at",
             {(isOld ? "no log since " : "") + text, lastLog.testedAt, isOld ? "bad" : "line"}},
            {"age_seconds", {cells::durationText(age), age, "line"}}};
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
Row periodRow(const QString& name, const QDate& begin, const Tally& tally, const Tally& all)
{
    return Row{{"first_tested", {name, begin.toString(Qt::ISODate), "line"}},
               {"units", cells::count(tally.units)}} +
           yieldFigures(tally, all);
}

/// The control that failed most often, the first of several.
Cell topFailureCell(const QVector<int>& failed)
{
    const auto top = std::max_element(failed.cbegin(), failed.cend());
    if (*top == 0)
        return cells::none();
    const auto componentNum = static_cast<int>(std::distance(failed.cbegin(), top));
    return {controlnames::control(componentNum) + ", " + cells::unitsText(*top),
            QJsonObject{{"component", componentNum}, {"failed_units", *top}}, "line"};
}

void addYields(Tables& tables, const Report& report)
{
    constexpr int maxRecentDays = 8;
    const QStringList recentNames{"Today so far, ", "Yesterday, "};
    const ReportRequest& request = report.request;
    const Tally& total = report.total;
    tables["totals"].append(
        {{"units", cells::count(total.units)},
         {"attempts", cells::count(total.attempts)},
         {"first_pass_yield", cells::share(total.passedFirst, total.units)},
         {"final_yield", cells::share(total.passedLast, total.units)},
         {"aborted", cells::share(total.abortedFirst, total.units)},
         {"false_failures", cells::share(report.falseFailures, report.failedAttempts)},
         {"median_test_time", cells::testTime(report.testTimes)}});
    for (const LastLog& lastLog : request.lastLogs)
        if (request.includes(lastLog.station))
            tables["last_logs"].append(lastLogRow(lastLog, request.now));
    for (int ago = 0; ago < maxRecentDays; ++ago) {
        const QDate day = request.now.date().addDays(-ago);
        const QString name = QLocale::c().toString(day, QString("ddd d MMM yyyy"));
        if (request.includes(day))
            tables["recent_days"].append(
                periodRow(recentNames.value(ago) + name, day, report.days.value(day), total));
    }
    for (const Timeline::Period& period : timelineOf(report.days).periods)
        tables["trend"].append(periodRow(period.name, period.begin, period.tally, total));
    for (auto each = report.stations.cbegin(); each != report.stations.cend(); ++each)
        tables["stations"].append(Row{{"station", cells::station(each.key())},
                                      {"units", cells::count(each->tally.units)},
                                      {"attempts", cells::count(each->tally.attempts)}} +
                                  yieldFigures(each->tally, total) +
                                  Row{{"median_test_time", cells::testTime(each->testTimes)},
                                      {"top_failure", topFailureCell(each->failed)}});
}

Row controlRow(const ControlFailures& control)
{
    return {{"component", cells::control(control.componentNum)},
            {"failed_units", cells::share(control.failed, control.units)}};
}

void addControls(Tables& tables, const Report& report)
{
    for (const ControlFailures& control : report.controls) {
        tables["controls"].append(controlRow(control));
        if (control.aborted > 0)
            tables["aborted"].append(
                {{"component", cells::control(control.componentNum)},
                 {"first_attempts", cells::share(control.aborted, report.total.abortedFirst)}});
    }
    const int all = report.failureCount;
    int sum = 0;
    for (const ControlFailures& control : report.failedControls) {
        sum += control.failed;
        tables["pareto"].append(controlRow(control) +
                                Row{{"share", cells::percent(control.failed, all)},
                                    {"cumulative", cells::percent(sum, all)}});
    }
    for (const ControlFailures& control : report.topControls())
        for (int band = 0; band < control.missedBands.size(); ++band)
            tables["missed_bands"].append(
                {{"component", cells::control(control.componentNum)},
                 {"band", {controlnames::band(control.componentNum, band), band}},
                 {"failed_units", cells::count(control.missedBands.at(band))}});
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

void addUnits(Tables& tables, const Report& report)
{
    int number = 0;
    for (const AttemptsByNumber& each : report.attemptsByNumber) {
        ++number;
        const QString suffix = number == Report::maxNumbers ? " and later" : "";
        tables["attempts_by_number"].append({{"number", {QString::number(number) + suffix, number}},
                                             {"attempts", cells::count(each.attempts)},
                                             {"passed", cells::share(each.passed, each.attempts)},
                                             {"aborted", cells::count(each.aborted)}});
    }
    for (const auto& [testedAt, unit] : report.notPassedUnits)
        tables["not_passed"].append({{"serial", serialCell(unit.last.serial)},
                                     {"tested_at", timeCell(testedAt)},
                                     {"station", cells::station(unit.last.station)},
                                     {"attempts", cells::count(unit.attempts)},
                                     {"failures", failuresCell(unit.last)}});
    for (const auto& [order, unit] : report.retestedUnits)
        tables["retested"].append({{"serial", serialCell(unit.last.serial)},
                                   {"attempts", cells::count(unit.attempts)},
                                   {"first_tested_at", timeCell(unit.first.testedAt)},
                                   {"first_station", cells::station(unit.first.station)},
                                   {"first_result", resultCell(unit.first)},
                                   {"last_tested_at", timeCell(unit.last.testedAt)},
                                   {"last_station", cells::station(unit.last.station)},
                                   {"last_result", resultCell(unit.last)}});
}
} // namespace

Tables tables::all(const Report& report)
{
    Tables tables;
    for (const char* name :
         {"last_logs", "recent_days", "trend", "stations", "controls", "aborted", "pareto",
          "missed_bands", "attempts_by_number", "not_passed", "retested"})
        tables.insert(name, {}); // also those that stay empty
    addYields(tables, report);
    addControls(tables, report);
    addUnits(tables, report);
    return tables;
}
