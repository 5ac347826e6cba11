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
const Cell none{"–", {}};

QJsonValue ratio(int part, int whole)
{
    return whole == 0 ? QJsonValue() : QJsonValue(1.0 * part / whole);
}

/// Rounding must not make all or none of what is neither.
QString percentText(int part, int whole)
{
    if (whole == 0)
        return "–";
    const double percent = 100.0 * part / whole;
    if (part == 0 || part == whole)
        return QString("%1\u00a0%").arg(percent);
    return QString::number(std::clamp(percent, 0.1, 99.9), 'f', 1) + "\u00a0%";
}

/// "2 min 35 s", "1 h 0 min 12 s".
QString durationText(qint64 seconds)
{
    const auto hours = static_cast<int>(seconds / 3600);
    return (hours > 0 ? cells::countText(hours) + " h " : "") +
           QString("%1 min %2 s").arg(seconds / 60 % 60).arg(seconds % 60);
}

Cell countCell(int number)
{
    return {cells::countText(number), number, "number"};
}

Cell stationCell(const QString& name)
{
    return {name, name, "name"};
}

Cell percentCell(int part, int whole)
{
    return {percentText(part, whole), ratio(part, whole), "number"};
}

Cell limitsCell(const Tally& part, const Tally& all)
{
    if (part.units == 0)
        return none;
    const QStringList positions{"below LCL", "within", "above UCL"}; // as Position
    const QStringList prefixes{"▼ below LCL, ", "within ", "▲ above UCL, "};
    const ControlLimits limits = controlLimits(part.units, all);
    const Position position = limits.positionOf(part.passedFirst);
    const auto index = static_cast<int>(position);
    const QJsonObject value{{"lcl", ratio(limits.lower, part.units)},
                            {"ucl", ratio(limits.upper, part.units)},
                            {"position", positions.at(index)}};
    return {prefixes.at(index) + percentText(limits.lower, part.units) + " to " +
                percentText(limits.upper, part.units),
            value, position == Position::BelowLcl ? "bad" : "line"};
}

Cell testTimeCell(const TestTimes& times)
{
    if (times.attempts == 0)
        return none;
    const QJsonObject value{{"seconds", times.medianSeconds}, {"attempts", times.attempts}};
    return {durationText(qRound(times.medianSeconds)), value, "line",
            cells::countText(times.attempts) + " attempts"};
}

Row lastLogRow(const LastLog& lastLog, const QDateTime& now)
{
    constexpr qint64 daySeconds = 24 * 60 * 60;
    const Cell station = stationCell(lastLog.station);
    if (lastLog.testedAt.isEmpty())
        return {
            {"station", station}, {"tested_at", {"no log yet", {}, "bad"}}, {"age_seconds", none}};
    // Both as UTC: the difference on the wall clock.
    const auto time = QDateTime::fromString(lastLog.testedAt + 'Z', Qt::ISODate);
    const qint64 age = time.secsTo({now.date(), now.time(), Qt::UTC});
    const bool isOld = age > daySeconds;
    const QString text = QLocale::c().toString(time, QString("ddd d MMM hh:mm"));
    return {{"station", station},
            {"tested_at",
             {(isOld ? "no log since " : "") + text, lastLog.testedAt, isOld ? "bad" : "line"}},
            {"age_seconds", {durationText(age), age, "line"}}};
}

/// all: the units of the page.
Row yieldFigures(const Tally& tally, const Tally& all)
{
    return {{"first_pass_yield", cells::share(tally.passedFirst, tally.units)},
            {"control_limits", limitsCell(tally, all)},
            {"final_yield", cells::share(tally.passedLast, tally.units)},
            {"aborted", countCell(tally.abortedFirst)}};
}

/// begin: the first day of the period.
Row periodRow(const QString& name, const QDate& begin, const Tally& tally, const Tally& all)
{
    return Row{{"first_tested", {name, begin.toString(Qt::ISODate), "line"}},
               {"units", countCell(tally.units)}} +
           yieldFigures(tally, all);
}

/// The control that failed most often, the first of several.
Cell topFailureCell(const QVector<int>& failed)
{
    const auto top = std::max_element(failed.cbegin(), failed.cend());
    if (*top == 0)
        return none;
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
        {{"units", countCell(total.units)},
         {"attempts", countCell(total.attempts)},
         {"first_pass_yield", cells::share(total.passedFirst, total.units)},
         {"final_yield", cells::share(total.passedLast, total.units)},
         {"aborted", cells::share(total.abortedFirst, total.units)},
         {"false_failures", cells::share(report.falseFailures, report.failedAttempts)},
         {"median_test_time", testTimeCell(report.testTimes)}});
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
        tables["stations"].append(Row{{"station", stationCell(each.key())},
                                      {"units", countCell(each->tally.units)},
                                      {"attempts", countCell(each->tally.attempts)}} +
                                  yieldFigures(each->tally, total) +
                                  Row{{"median_test_time", testTimeCell(each->testTimes)},
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
                                Row{{"share", percentCell(control.failed, all)},
                                    {"cumulative", percentCell(sum, all)}});
    }
    for (const ControlFailures& control : report.topControls())
        for (int band = 0; band < control.missedBands.size(); ++band)
            tables["missed_bands"].append(
                {{"component", cells::control(control.componentNum)},
                 {"band", {controlnames::band(control.componentNum, band), band}},
                 {"failed_units", countCell(control.missedBands.at(band))}});
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
                                             {"attempts", countCell(each.attempts)},
                                             {"passed", cells::share(each.passed, each.attempts)},
                                             {"aborted", countCell(each.aborted)}});
    }
    for (const auto& [testedAt, unit] : report.notPassedUnits)
        tables["not_passed"].append({{"serial", serialCell(unit.last.serial)},
                                     {"tested_at", timeCell(testedAt)},
                                     {"station", stationCell(unit.last.station)},
                                     {"attempts", countCell(unit.attempts)},
                                     {"failures", failuresCell(unit.last)}});
    for (const auto& [order, unit] : report.retestedUnits)
        tables["retested"].append({{"serial", serialCell(unit.last.serial)},
                                   {"attempts", countCell(unit.attempts)},
                                   {"first_tested_at", timeCell(unit.first.testedAt)},
                                   {"first_station", stationCell(unit.first.station)},
                                   {"first_result", resultCell(unit.first)},
                                   {"last_tested_at", timeCell(unit.last.testedAt)},
                                   {"last_station", stationCell(unit.last.station)},
                                   {"last_result", resultCell(unit.last)}});
}
} // namespace

QString cells::countText(int number)
{
    return QLocale(QLocale::English).toString(number);
}

QString cells::unitsText(int number)
{
    return countText(number) + (number == 1 ? " unit" : " units");
}

Cell cells::share(int part, int whole)
{
    const QJsonObject value{{"count", part}, {"of", whole}, {"share", ratio(part, whole)}};
    const QString basis = countText(part) + " of " + countText(whole);
    return {percentText(part, whole), value, "line", whole == 0 ? QString() : basis};
}

Cell cells::control(int componentNum)
{
    const QString name = controlnames::control(componentNum);
    return {QString("%1 (component %2)").arg(name).arg(componentNum), componentNum};
}

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
