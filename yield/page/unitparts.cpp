// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/attemptrules.h"
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

QString missedText(const Attempt& attempt)
{
    constexpr int mostControls = 3;
    const auto outcome = attemptrules::outcomeOf(attempt.marks, attempt.tests18);
    QStringList parts = controlnames::missed(outcome.missed);
    const int more = parts.size() - mostControls;
    if (more > 0)
        parts = parts.mid(0, mostControls) << QString("and %1 more").arg(more);
    if (outcome.endedAt)
        parts.prepend("ended early at " + controlnames::control(*outcome.endedAt));
    return parts.join("; ");
}

void writeAttempt(Html::Row& row, const Attempt& attempt)
{
    row.cell(minute(attempt.testedAt), "line").cell(attempt.station, "name");
    const auto outcome = attemptrules::outcomeOf(attempt.marks, attempt.tests18);
    if (outcome.isComplete())
        row.cell("complete", "good");
    else
        row.cell(outcome.endedAt ? "ended early" : "not complete", "bad");
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
    for (const TestedUnit& unit : report.openUnits)
        html.row()
            .cell(serialText(unit.last.serial), "serial")
            .cell(minute(unit.last.testedAt), "line")
            .cell(unit.last.station, "name")
            .number(count(unit.attempts))
            .cell(missedText(unit.last));
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
    for (const TestedUnit& unit : report.repeatedUnits) {
        Html::Row row = html.row();
        row.cell(serialText(unit.last.serial), "serial").number(count(unit.attempts));
        writeAttempt(row, unit.first);
        writeAttempt(row, unit.last);
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
