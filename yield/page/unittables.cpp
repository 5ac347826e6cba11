// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/attemptrules.h"
#include "yield/logs/controlnames.h"
#include "yield/page/tables.h"

namespace
{
Cell serialCell(const QString& serial)
{
    return {serial.isEmpty() ? "(no serial number)" : serial, serial, "serial"};
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

Row attemptCells(const Attempt& attempt)
{
    const QString result = resultOf(attempt);
    return {cells::time(attempt.testedAt),
            cells::station(attempt.station),
            {result, result, result == "passed" ? "good" : "bad"}};
}
} // namespace

Table tables::attemptsByNumber(const Report& report)
{
    Table table{"Yield by attempt",
                {{"Attempt", "number"},
                 {"Attempts", "attempts"},
                 {"Passed", "passed"},
                 {"Aborted", "aborted"}}};
    for (const AttemptsByNumber& each : report.attemptsByNumber) {
        const int number = table.rows.size() + 1;
        const QString suffix = number == Report::maxNumbers ? " and later" : "";
        table.rows.append({{QString::number(number) + suffix, number},
                           cells::count(each.attempts),
                           cells::share(each.passed, each.attempts),
                           cells::count(each.aborted)});
    }
    return table;
}

Table tables::notPassed(const Report& report)
{
    Table table{"Units not yet passed",
                {{"Serial number", "serial"},
                 {"Last tested", "tested_at"},
                 {"Station", "station"},
                 {"Attempts", "attempts"},
                 {"Failures of the last attempt", "failures"}}};
    for (const TestedUnit& unit : report.notPassedUnits)
        table.rows.append({serialCell(unit.last.serial), cells::time(unit.last.testedAt),
                           cells::station(unit.last.station), cells::count(unit.attempts),
                           failuresCell(unit.last)});
    return table;
}

Table tables::retested(const Report& report)
{
    Table table{"Retested units",
                {{"Serial number", "serial"},
                 {"Attempts", "attempts"},
                 {"First attempt", "first_tested_at"},
                 {"First station", "first_station"},
                 {"First result", "first_result"},
                 {"Last attempt", "last_tested_at"},
                 {"Last station", "last_station"},
                 {"Last result", "last_result"}}};
    for (const TestedUnit& unit : report.retestedUnits)
        table.rows.append(Row{serialCell(unit.last.serial), cells::count(unit.attempts)} +
                          attemptCells(unit.first) + attemptCells(unit.last));
    return table;
}
