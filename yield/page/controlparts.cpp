// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/controlnames.h"
#include "yield/page/chart.h"
#include "yield/page/figuretext.h"
#include "yield/page/html.h"
#include "yield/page/parts.h"

#include <algorithm>

using figuretext::count;
using figuretext::percent;
using figuretext::share;

namespace
{
constexpr int mostParetoBars = 14;
constexpr int worstCount = 3;

const ControlMisses& missesOf(const Report& report, int componentNum)
{
    return report.controls.at(static_cast<std::size_t>(componentNum));
}

/// The controls that any unit missed, most missed first.
QVector<int> missedControls(const Report& report)
{
    QVector<int> controls;
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c)
        if (missesOf(report, c).missed > 0)
            controls.append(c);
    std::stable_sort(controls.begin(), controls.end(), [&](int a, int b) {
        return missesOf(report, a).missed > missesOf(report, b).missed;
    });
    return controls;
}

QString missedText(const Report& report, int componentNum)
{
    const ControlMisses& control = missesOf(report, componentNum);
    if (control.units > 0)
        return share(control.missed, control.units);
    return componentNum == roster::powerButton ? "never tested" : "not tested here";
}
void writeControls(Html& html, const Report& report)
{
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c)
        html.row()
            .cell(controlnames::control(c))
            .number(QString::number(c))
            .cell(missedText(report, c));
}

int allMisses(const Report& report)
{
    int all = 0;
    for (const ControlMisses& control : report.controls)
        all += control.missed;
    return all;
}

void writeParetoText(Html& html, const Report& report)
{
    const int more = missedControls(report).size() - mostParetoBars;
    if (allMisses(report) == 0)
        html.text("No first attempt missed a band.");
    else
        html.text("Units that missed the control at the first attempt. The line adds up the "
                  "shares of all these misses.");
    if (more > 0)
        html.text(QString(" %1 more controls are in the table.").arg(more));
}

void writePareto(Html& html, const Report& report)
{
    QVector<chart::ParetoBar> bars;
    for (const int c : missedControls(report).mid(0, mostParetoBars))
        bars.append({controlnames::control(c), missesOf(report, c).missed});
    chart::drawPareto(html, bars, allMisses(report));
}

void writeMisses(Html& html, const Report& report)
{
    const int all = allMisses(report);
    int sum = 0;
    for (const int c : missedControls(report)) {
        const int missed = missesOf(report, c).missed;
        sum += missed;
        html.row()
            .cell(controlnames::control(c))
            .cell(missedText(report, c))
            .number(percent(missed, all))
            .number(percent(sum, all));
    }
}

void writeWorst(Html& html, const Report& report)
{
    for (const int c : missedControls(report).mid(0, worstCount)) {
        const auto box = html.open("div");
        html.element("h3", QString("%1 (component %2)").arg(controlnames::control(c)).arg(c));
        html.element("p", "Missed by " + missedText(report, c), "quiet");
        chart::drawBands(html, c, missesOf(report, c));
    }
}

void writeBands(Html& html, const Report& report)
{
    for (const int c : missedControls(report).mid(0, worstCount))
        for (int band = 0; band < missesOf(report, c).missedBands.size(); ++band)
            html.row()
                .cell(controlnames::control(c))
                .cell(controlnames::band(c, band))
                .number(count(missesOf(report, c).missedBands.at(band)));
}

void writeEndedAt(Html& html, const Report& report)
{
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c) {
        const int units = missesOf(report, c).endedHere;
        if (units == 0)
            continue;
        Html::Row row = html.row();
        row.cell(controlnames::control(c))
            .number(QString::number(c))
            .cell(share(units, report.total.endedFirst));
        const auto cell = html.open("td");
        chart::drawShare(html, units, report.total.endedFirst);
    }
}
} // namespace

Parts controlParts()
{
    return {{"surface", chart::drawSurface}, {"controls", writeControls},
            {"paretoText", writeParetoText}, {"pareto", writePareto},
            {"misses", writeMisses},         {"worst", writeWorst},
            {"bands", writeBands},           {"endedAt", writeEndedAt}};
}
