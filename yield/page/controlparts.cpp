// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/controlnames.h"
#include "yield/page/chart.h"
#include "yield/page/figuretext.h"
#include "yield/page/markup.h"
#include "yield/page/parts.h"

#include <algorithm>

using figuretext::percent;
using figuretext::share;
using html::Cells;

namespace
{
constexpr int mostParetoBars = 14;
constexpr int worstCount = 3;

Cells controlCells(const ControlMisses& control)
{
    return {{figuretext::control(control)}, {figuretext::missed(control)}};
}

/// The controls that any unit missed, most missed first.
QVector<ControlMisses> missedControls(const Report& report)
{
    QVector<ControlMisses> controls;
    for (const ControlMisses& control : report.controls)
        if (control.missed > 0)
            controls.append(control);
    std::stable_sort(controls.begin(), controls.end(),
                     [](const auto& a, const auto& b) { return a.missed > b.missed; });
    return controls;
}

QString endedRows(const Report& report)
{
    const int all = report.total.endedFirst;
    QString rows;
    for (const ControlMisses& control : report.controls)
        if (control.endedHere > 0)
            rows += html::row({{figuretext::control(control)}, {share(control.endedHere, all)}});
    return rows;
}

QString worstPicture(const ControlMisses& control)
{
    return html::element(
        "div", html::element("h3", figuretext::control(control)) +
                   html::element("p", "Missed by " + figuretext::missed(control), "quiet") +
                   chart::bands(control));
}

QString bandRows(const ControlMisses& control)
{
    return html::rows(control.missedBands, [&, band = 0](int missed) mutable {
        return Cells{{figuretext::control(control)},
                     {controlnames::band(control.componentNum, band++)},
                     {figuretext::count(missed), "number"}};
    });
}
} // namespace

Parts controlParts(const Report& report)
{
    const QVector<ControlMisses> missed = missedControls(report);
    int all = 0;
    for (const ControlMisses& control : missed)
        all += control.missed;
    QString worst;
    QString bands;
    for (const ControlMisses& control : missed.mid(0, worstCount)) {
        worst += worstPicture(control);
        bands += bandRows(control);
    }
    const auto missedCells = [&, sum = 0](const ControlMisses& control) mutable {
        sum += control.missed;
        return Cells{{figuretext::control(control)},
                     {figuretext::missed(control)},
                     {percent(control.missed, all), "number"},
                     {percent(sum, all), "number"}};
    };
    return {{"surface", chart::surface(report.controls)},
            {"controls", html::rows(report.controls, controlCells)},
            {"moreMissed", figuretext::ifAny(missed.size() - mostParetoBars, figuretext::count)},
            {"pareto", chart::pareto(missed.mid(0, mostParetoBars), all)},
            {"misses", html::rows(missed, missedCells)},
            {"worst", worst},
            {"bands", bands},
            {"endedAt", endedRows(report)}};
}
