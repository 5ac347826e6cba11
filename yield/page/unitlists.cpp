// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/unitlists.h"

#include "yield/logs/controlnames.h"
#include "yield/page/figuretext.h"
#include "yield/page/html.h"

using figuretext::count;

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
    return serial.isEmpty() ? QStringLiteral("(no serial number)") : serial;
}

void writeResult(Html& html, Result result)
{
    const bool passed = result == Result::Passed;
    html.element(QStringLiteral("td"),
                 passed                         ? QStringLiteral("complete")
                 : result == Result::EndedEarly ? QStringLiteral("ended early")
                                                : QStringLiteral("not complete"),
                 passed ? QStringLiteral("good") : QStringLiteral("bad"));
}

QString missedText(const OpenUnit& unit)
{
    QStringList parts;
    for (const MissedControl& control : unit.missed)
        parts << QStringLiteral("%1: %2").arg(
            controlnames::control(control.componentNum),
            controlnames::bands(control.componentNum, control.bands));
    const int more = unit.missedControlCount - unit.missed.size();
    if (more > 0)
        parts << QStringLiteral("and %1 more").arg(more);
    return parts.join(QStringLiteral("; "));
}

void writeMore(Html& html, int more, const QString& rest)
{
    if (more > 0)
        html.element(QStringLiteral("p"), QStringLiteral("And %1 more; %2").arg(count(more), rest),
                     QStringLiteral("quiet"));
}

} // namespace

void unitlists::writeOpen(Html& html, const Report& report)
{
    const int open = report.total.units - report.total.passedLast;
    html.beginSection(QStringLiteral("open"), QStringLiteral("Units not complete"),
                      open == 0 ? QStringLiteral("The last attempt at every unit is complete.")
                                : QStringLiteral("%1 whose last attempt is not complete, newest "
                                                 "first: the list to walk to.")
                                      .arg(figuretext::units(open)));
    if (open > 0) {
        html.beginTable({QStringLiteral("Serial number"), QStringLiteral("Last tested"),
                         QStringLiteral("Station"), QStringLiteral("#Attempts"),
                         QStringLiteral("What the last attempt missed")});
        for (const OpenUnit& unit : report.openUnits) {
            html.begin(QStringLiteral("tr"));
            html.element(QStringLiteral("td"), serialText(unit.serial), QStringLiteral("serial"));
            html.element(QStringLiteral("td"), minute(unit.lastTestedAt), QStringLiteral("time"));
            html.element(QStringLiteral("td"), unit.lastStation);
            html.element(QStringLiteral("td"), count(unit.attempts), QStringLiteral("number"));
            html.element(QStringLiteral("td"), missedText(unit));
            html.end();
        }
        html.endTable();
        writeMore(html, open - report.openUnits.size(),
                  QStringLiteral("\"zorvi_yield export\" lists every attempt."));
    }
    html.end();
}

void unitlists::writeRepeated(Html& html, const Report& report)
{
    const int repeated = report.repeatedUnitCount;
    html.beginSection(
        QStringLiteral("repeated"), QStringLiteral("Units tested more than once"),
        repeated == 0
            ? QStringLiteral("No unit was tested twice.")
            : QStringLiteral("%1, most attempts first.").arg(figuretext::units(repeated)));
    if (repeated > 0) {
        html.beginTable({QStringLiteral("Serial number"), QStringLiteral("#Attempts"),
                         QStringLiteral("First attempt"), QStringLiteral("Station"), QString(),
                         QStringLiteral("Last attempt"), QStringLiteral("Station"), QString()});
        for (const RepeatedUnit& unit : report.repeatedUnits) {
            html.begin(QStringLiteral("tr"));
            html.element(QStringLiteral("td"), serialText(unit.serial), QStringLiteral("serial"));
            html.element(QStringLiteral("td"), count(unit.attempts), QStringLiteral("number"));
            html.element(QStringLiteral("td"), minute(unit.firstTestedAt), QStringLiteral("time"));
            html.element(QStringLiteral("td"), unit.firstStation);
            writeResult(html, unit.firstResult);
            html.element(QStringLiteral("td"), minute(unit.lastTestedAt), QStringLiteral("time"));
            html.element(QStringLiteral("td"), unit.lastStation);
            writeResult(html, unit.lastResult);
            html.end();
        }
        html.endTable();
        writeMore(html, repeated - report.repeatedUnits.size(),
                  QStringLiteral("\"zorvi_yield unit SERIAL\" shows every attempt at one."));
    }
    html.end();
}
