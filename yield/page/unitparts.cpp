// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/controlnames.h"
#include "yield/page/figuretext.h"
#include "yield/page/html.h"
#include "yield/page/parts.h"

#include <QStringList>

using figuretext::count;
using figuretext::minute;

namespace
{
/// As many rows of a list go to paper; the style sheet leaves out the others.
constexpr int rowsOnPaper = 60;

QString serialText(const QString& serial)
{
    return serial.isEmpty() ? "(no serial number)" : serial;
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

void writeResult(Html::Row& row, Result result)
{
    if (result == Result::Passed)
        row.cell("complete", "good");
    else
        row.cell(result == Result::EndedEarly ? "ended early" : "not complete", "bad");
}

/// What of a list is not there: on the page (rest says where it is), and on paper.
void writeRest(Html& html, int all, int shown, const QString& rest)
{
    if (all > shown)
        html.element("p", QString("And %1 more; %2").arg(count(all - shown), rest), "quiet");
    if (shown > rowsOnPaper)
        html.element("p",
                     QString("On paper: the first %1 of the %2 on the page.")
                         .arg(QString::number(rowsOnPaper), count(shown)),
                     "quiet paper");
}

int openCount(const Report& report)
{
    return report.total.units - report.total.passedLast;
}

void writeOpenText(Html& html, const Report& report)
{
    if (openCount(report) == 0)
        html.text("The last attempt at every unit is complete.");
    else
        html.text(figuretext::units(openCount(report)) +
                  " whose last attempt is not complete, newest first: the list to walk to.");
}

void writeOpen(Html& html, const Report& report)
{
    for (const OpenUnit& unit : report.openUnits)
        html.row()
            .cell(serialText(unit.serial), "serial")
            .cell(minute(unit.lastTestedAt), "line")
            .cell(unit.lastStation, "name")
            .number(count(unit.attempts))
            .cell(missedText(unit));
}

void writeOpenRest(Html& html, const Report& report)
{
    writeRest(html, openCount(report), report.openUnits.size(),
              "\"zorvi_yield export\" lists every attempt.");
}

void writeRepeatedText(Html& html, const Report& report)
{
    if (report.repeatedUnitCount == 0)
        html.text("No unit was tested twice.");
    else
        html.text(figuretext::units(report.repeatedUnitCount) + ", most attempts first.");
}

void writeRepeated(Html& html, const Report& report)
{
    for (const RepeatedUnit& unit : report.repeatedUnits) {
        Html::Row row = html.row();
        row.cell(serialText(unit.serial), "serial")
            .number(count(unit.attempts))
            .cell(minute(unit.firstTestedAt), "line")
            .cell(unit.firstStation, "name");
        writeResult(row, unit.firstResult);
        row.cell(minute(unit.lastTestedAt), "line").cell(unit.lastStation, "name");
        writeResult(row, unit.lastResult);
    }
}

void writeRepeatedRest(Html& html, const Report& report)
{
    writeRest(html, report.repeatedUnitCount, report.repeatedUnits.size(),
              "\"zorvi_yield unit SERIAL\" shows every attempt at one.");
}
} // namespace

Parts unitParts()
{
    return {{"openText", writeOpenText},     {"openRows", writeOpen},
            {"openRest", writeOpenRest},     {"repeatedText", writeRepeatedText},
            {"repeatedRows", writeRepeated}, {"repeatedRest", writeRepeatedRest}};
}
