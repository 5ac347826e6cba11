// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/controlnames.h"
#include "yield/page/figuretext.h"
#include "yield/page/html.h"
#include "yield/page/parts.h"

#include <QStringList>

using figuretext::count;
using figuretext::ifAny;
using html::Cell;
using html::Cells;

namespace
{
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

Cell resultCell(Result result)
{
    if (result == Result::Passed)
        return {"complete", "good"};
    return {result == Result::EndedEarly ? "ended early" : "not complete", "bad"};
}

QString missedText(const OpenUnit& unit)
{
    QStringList parts;
    if (unit.endedAt)
        parts << "ended early at " + controlnames::control(*unit.endedAt);
    for (const MissedControl& control : unit.missed)
        parts << QString("%1: %2").arg(controlnames::control(control.componentNum),
                                       controlnames::bands(control.componentNum, control.bands));
    const int more = unit.missedControlCount - unit.missed.size();
    if (more > 0)
        parts << QString("and %1 more").arg(more);
    return parts.join("; ");
}

Cells openCells(const OpenUnit& unit)
{
    return {serialCell(unit.serial),
            timeCell(unit.lastTestedAt),
            {unit.lastStation, "name"},
            {count(unit.attempts), "number"},
            {missedText(unit)}};
}

Cells repeatedCells(const RepeatedUnit& unit)
{
    return {serialCell(unit.serial),      {count(unit.attempts), "number"},
            timeCell(unit.firstTestedAt), {unit.firstStation, "name"},
            resultCell(unit.firstResult), timeCell(unit.lastTestedAt),
            {unit.lastStation, "name"},   resultCell(unit.lastResult)};
}

/// How many rows a list has on the page, if paper has fewer.
QString notOnPaper(int rows)
{
    return rows > rowsOnPaper ? count(rows) : QString();
}
} // namespace

Parts unitParts(const Report& report)
{
    const int open = report.total.units - report.total.passedLast;
    const int openRows = report.openUnits.size();
    const int repeatedRows = report.repeatedUnits.size();
    return {{"open", ifAny(open, figuretext::units)},
            {"openRows", html::rows(report.openUnits, openCells)},
            {"moreOpen", ifAny(open - openRows, count)},
            {"longOpen", notOnPaper(openRows)},
            {"repeated", ifAny(report.repeatedUnitCount, figuretext::units)},
            {"repeatedRows", html::rows(report.repeatedUnits, repeatedCells)},
            {"moreRepeated", ifAny(report.repeatedUnitCount - repeatedRows, count)},
            {"longRepeated", notOnPaper(repeatedRows)}};
}
