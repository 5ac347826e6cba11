// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/unitlists.h"

#include "yield/logs/controlnames.h"
#include "yield/page/figuretext.h"
#include "yield/page/html.h"

using figuretext::count;
using Kind = Html::Column::Kind;

namespace
{
/// "2026-11-09 06:41" of a time as the database holds it.
QString minute(const QString& time)
{
    QString text = time.left(16);
    return text.replace(QLatin1Char('T'), QLatin1Char(' '));
}

QString serialText(const QString& serial)
{
    return serial.isEmpty() ? "(no serial number)" : serial;
}

void writeResult(Html& html, Result result)
{
    if (result == Result::Passed)
        html.cell("complete", "good");
    else
        html.cell(result == Result::EndedEarly ? "ended early" : "not complete", "bad");
}

QString missedText(const OpenUnit& unit)
{
    QStringList parts;
    for (const MissedControl& control : unit.missed)
        parts << QString("%1: %2").arg(controlnames::control(control.componentNum),
                                       controlnames::bands(control.componentNum, control.bands));
    const int more = unit.missedControlCount - unit.missed.size();
    if (more > 0)
        parts << QString("and %1 more").arg(more);
    return parts.join("; ");
}

void writeMore(Html& html, int more, const QString& rest)
{
    if (more > 0)
        html.element("p", QString("And %1 more; %2").arg(count(more), rest), "quiet");
}
} // namespace

void unitlists::writeOpen(Html& html, const Report& report)
{
    const int open = report.total.units - report.total.passedLast;
    const auto section =
        html.section("open", "Units not complete",
                     open == 0 ? "The last attempt at every unit is complete."
                               : QString("%1 whose last attempt is not complete, newest first: "
                                         "the list to walk to.")
                                     .arg(figuretext::units(open)));
    if (open == 0)
        return;
    {
        const auto table = html.table({{"Serial number"},
                                       {"Last tested"},
                                       {"Station"},
                                       {"Attempts", Kind::Number},
                                       {"What the last attempt missed"}});
        for (const OpenUnit& unit : report.openUnits) {
            const auto row = html.row();
            html.cell(serialText(unit.serial), "serial");
            html.cell(minute(unit.lastTestedAt), "time");
            html.cell(unit.lastStation);
            html.number(count(unit.attempts));
            html.cell(missedText(unit));
        }
    }
    writeMore(html, open - report.openUnits.size(), "\"zorvi_yield export\" lists every attempt.");
}

void unitlists::writeRepeated(Html& html, const Report& report)
{
    const int repeated = report.repeatedUnitCount;
    const auto section = html.section(
        "repeated", "Units tested more than once",
        repeated == 0 ? "No unit was tested twice."
                      : QString("%1, most attempts first.").arg(figuretext::units(repeated)));
    if (repeated == 0)
        return;
    {
        const auto table = html.table({{"Serial number"},
                                       {"Attempts", Kind::Number},
                                       {"First attempt"},
                                       {"Station"},
                                       {"Result"},
                                       {"Last attempt"},
                                       {"Station"},
                                       {"Result"}});
        for (const RepeatedUnit& unit : report.repeatedUnits) {
            const auto row = html.row();
            html.cell(serialText(unit.serial), "serial");
            html.number(count(unit.attempts));
            html.cell(minute(unit.firstTestedAt), "time");
            html.cell(unit.firstStation);
            writeResult(html, unit.firstResult);
            html.cell(minute(unit.lastTestedAt), "time");
            html.cell(unit.lastStation);
            writeResult(html, unit.lastResult);
        }
    }
    writeMore(html, repeated - report.repeatedUnits.size(),
              "\"zorvi_yield unit SERIAL\" shows every attempt at one.");
}
