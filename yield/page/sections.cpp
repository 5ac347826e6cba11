// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/sections.h"

#include "yield/page/chart.h"
#include "yield/page/definitions.h"
#include "yield/page/markup.h"
#include "yield/page/tables.h"

using cells::countText;
using cells::unitsText;
using html::paragraph;

namespace
{
const QString chartKey = "● within the control limits, ▼ below the LCL, ▲ above the UCL. The "
                         "shaded area lies between the limits, the broken line is the centre line: "
                         "the first-pass yield of all units. The bars are the units.";

QString status(const Report& report)
{
    return paragraph("A station needs attention when its last log is more than a day old: it "
                     "stands still, or its logs do not arrive.") +
           html::table(tables::lastLogs(report)) + html::table(tables::recentDays(report));
}

/// A long list of units; more: so many are not in it, export shows them.
QString unitList(const Table& table, int more, const QString& hint)
{
    return html::table(table, "scroll long") +
           paragraph(more > 0 ? QString("And %1 more; %2").arg(countText(more), hint) : QString()) +
           paragraph("On paper a list ends after 60 rows.", "quiet paper");
}

QString notPassed(const Report& report)
{
    const int units = report.total.units - report.total.passedLast;
    if (units == 0)
        return paragraph("The last attempt of every unit passed.");
    return paragraph(unitsText(units) + " whose last attempt did not pass, newest first.") +
           unitList(tables::notPassed(report), units - report.notPassedUnits.size(),
                    "\"zorvi_yield export\" lists every attempt.");
}

QString totals(const Report& report)
{
    const Table table = tables::totals(report);
    QString tiles;
    for (int i = 0; i < table.columns.size(); ++i) {
        const QString& name = table.columns.at(i).heading;
        const Cell& cell = table.rows.first().at(i);
        tiles +=
            html::element("div",
                          html::element("div", html::text(name), "name", html::definition(name)) +
                              html::element("div", html::text(cell.text), "figure") +
                              html::element("div", html::text(cell.basis), "basis"),
                          "tile");
    }
    return html::element("div", tiles, "tiles");
}

QString trend(const Report& report)
{
    const Timeline timeline = timelineOf(report.days);
    const int implausible = report.implausibleDates.units;
    QString warning;
    if (implausible > 0)
        warning = unitsText(implausible) + " with a first attempt before the year 2000 or more "
                                           "than a day after this page was made: the clock of a "
                                           "station is wrong. They count everywhere but here.";
    QString key;
    if (!timeline.periods.isEmpty())
        key = "By " + timeline.period + " of the first attempt: " + chartKey;
    return paragraph(warning, "bad") + paragraph(key) +
           html::scrollArea("Chart of the first-pass yield over time",
                            chart::timeline(timeline, report.total)) +
           html::data(tables::trend(report));
}

QString stations(const Report& report)
{
    return paragraph("By station of the first attempt: " + chartKey) +
           html::scrollArea("Chart of the first-pass yield by station",
                            chart::timeline(stationTimeline(report.stations), report.total)) +
           html::table(tables::stations(report));
}

QString heatMap(const Report& report)
{
    return paragraph("Of the units whose first attempt reached the control, the share that failed "
                     "there. The bold number is the component's, as in the log.") +
           html::scrollArea("Heat map", chart::surface(report.controls)) +
           html::data(tables::controls(report));
}

QString pareto(const Report& report)
{
    constexpr int maxBars = 14;
    const QVector<ControlFailures> controls = report.failedControls();
    if (controls.isEmpty())
        return paragraph("No control failed at a first attempt.");
    QString text = "Units whose first attempt failed at the control. The line is the cumulative "
                   "share of all failures.";
    if (controls.size() > maxBars)
        text += QString(" %1 more controls are in the data.").arg(controls.size() - maxBars);
    return paragraph(text) +
           html::scrollArea("Pareto chart",
                            chart::pareto(controls.mid(0, maxBars), failureCount(controls))) +
           html::data(tables::pareto(report));
}

QString bands(const Report& report)
{
    QString charts;
    for (const ControlFailures& control : report.topControls())
        charts += html::element(
            "div", html::element("h3", cells::controlText(control.componentNum)) +
                       paragraph("Failed units: " + cells::failedUnits(control).fullText()) +
                       chart::bands(control));
    if (charts.isEmpty())
        return paragraph("No band was missed at a first attempt.");
    return paragraph("Units that missed the band that begins at the value. Misses at one end: the "
                     "control does not reach that end. In between: a gap in its track. Everywhere: "
                     "a dead control.") +
           html::element("div", charts, "bands") + html::data(tables::bands(report));
}

QString aborted(const Report& report)
{
    const Cell share = cells::share(report.total.abortedFirst, report.total.units);
    return paragraph("Aborted first attempts: " + share.fullText() + '.', {}) +
           html::table(tables::aborted(report));
}

QString retests(const Report& report)
{
    const FalseFailures& failures = report.falseFailures;
    return html::table(tables::attemptsByNumber(report)) +
           paragraph("False failures, failed attempts whose unit passed when it was tested again "
                     "within an hour at the same station: " +
                         cells::share(failures.passedNext, failures.failed).fullText() + '.',
                     {});
}

QString retested(const Report& report)
{
    const int units = report.retestedUnitCount;
    if (units == 0)
        return paragraph("No unit was tested again.");
    return paragraph(unitsText(units) + ", most attempts first.") +
           unitList(tables::retested(report), units - report.retestedUnits.size(),
                    "\"zorvi_yield unit SERIAL\" shows every attempt of one.");
}

QString definitionList()
{
    QString content;
    for (const Definition& each : definitions())
        content += html::element("dt", html::text(each.term)) +
                   html::element("dd", html::text(each.meaning));
    return html::element("dl", content);
}
} // namespace

QVector<Section> sectionsOf(const Report& report)
{
    const Section first{"status", "Status", "Needs attention", status(report)};
    if (report.total.units == 0)
        return {first};
    return {
        first,
        {"not-passed", "Not passed", "Units not yet passed", notPassed(report)},
        {"totals", "Totals", "Totals", totals(report)},
        {"trend", "Trend", "First-pass yield over time", trend(report)},
        {"stations", "Stations", "First-pass yield by station", stations(report)},
        {"heat-map", "Heat map", "Failures on the control surface", heatMap(report)},
        {"pareto", "Pareto", "Failures by control", pareto(report)},
        {"bands", "Bands", "Missed bands of the top three controls", bands(report)},
        {"aborted", "Aborted", "Aborted first attempts", aborted(report)},
        {"retests", "Retests", "Yield by attempt, and false failures", retests(report)},
        {"retested", "Retested", "Retested units", retested(report)},
        {"definitions", "Definitions", "Definitions", definitionList()},
    };
}
