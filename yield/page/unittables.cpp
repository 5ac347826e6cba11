// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/attemptrules.h"
#include "yield/logs/controlnames.h"
#include "yield/page/tables.h"

namespace
{
Cell percent(int part, int whole)
{
    return {cells::percentText(part, whole), cells::ratio(part, whole), "number"};
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

attemptrules::Outcome outcomeOf(const Attempt& attempt)
{
    return attemptrules::outcomeOf(attempt.marks, attempt.tests18);
}

/// Where the attempt was aborted, and the first controls that failed.
Cell failuresCell(const Attempt& attempt)
{
    constexpr int maxControls = 3;
    const auto outcome = outcomeOf(attempt);
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
    const auto outcome = outcomeOf(attempt);
    if (outcome.hasPassed())
        return {"passed", "passed", "good"};
    const QString result = outcome.abortedAt ? "aborted" : "failed";
    return {result, result, "bad"};
}

/// prefix: of the keys.
Row attemptFigures(const QString& prefix, const Attempt& attempt)
{
    return {{prefix + "tested_at", timeCell(attempt.testedAt)},
            {prefix + "station", cells::station(attempt.station)},
            {prefix + "result", resultCell(attempt)}};
}

Row controlFigures(const ControlFailures& control)
{
    return {{"component", cells::control(control.componentNum)},
            {"failed_units", cells::failedUnits(control)}};
}
} // namespace

Rows tables::controls(const Report& report)
{
    Rows rows;
    for (const ControlFailures& control : report.controls)
        rows.append(controlFigures(control));
    return rows;
}

Rows tables::pareto(const Report& report)
{
    Rows rows;
    const int all = report.failureCount;
    int sum = 0;
    for (const ControlFailures& control : report.failedControls) {
        sum += control.failed;
        rows.append(controlFigures(control) + Row{{"share", percent(control.failed, all)},
                                                  {"cumulative", percent(sum, all)}});
    }
    return rows;
}

Rows tables::bands(const Report& report)
{
    Rows rows;
    for (const ControlFailures& control : report.topControls())
        for (int band = 0; band < control.missedBands.size(); ++band)
            rows.append({{"component", cells::control(control.componentNum)},
                         {"band", {controlnames::band(control.componentNum, band), band}},
                         {"failed_units", cells::count(control.missedBands.at(band))}});
    return rows;
}

Rows tables::aborted(const Report& report)
{
    Rows rows;
    for (const ControlFailures& control : report.controls)
        if (control.aborted > 0)
            rows.append(
                {{"component", cells::control(control.componentNum)},
                 {"first_attempts", cells::share(control.aborted, report.total.abortedFirst)}});
    return rows;
}

Rows tables::attemptsByNumber(const Report& report)
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

Rows tables::notPassed(const Report& report)
{
    Rows rows;
    for (const TestedUnit& unit : report.notPassedUnits)
        rows.append({{"serial", serialCell(unit.last.serial)},
                     {"tested_at", timeCell(unit.last.testedAt)},
                     {"station", cells::station(unit.last.station)},
                     {"attempts", cells::count(unit.attempts)},
                     {"failures", failuresCell(unit.last)}});
    return rows;
}

Rows tables::retested(const Report& report)
{
    Rows rows;
    for (const TestedUnit& unit : report.retestedUnits)
        rows.append(Row{{"serial", serialCell(unit.last.serial)},
                        {"attempts", cells::count(unit.attempts)}} +
                    attemptFigures("first_", unit.first) + attemptFigures("last_", unit.last));
    return rows;
}
