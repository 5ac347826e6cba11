// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/controlnames.h"
#include "yield/page/chart.h"
#include "yield/page/figuretext.h"
#include "yield/page/html.h"
#include "yield/page/parts.h"

#include <algorithm>

using figuretext::percent;
using figuretext::share;
using html::Cells;

namespace
{
constexpr int mostParetoBars = 14;
constexpr int worstCount = 3;

const ControlMisses& missesOf(const Report& report, int componentNum)
{
    return report.controls.at(static_cast<std::size_t>(componentNum));
}

QString missedText(const Report& report, int componentNum)
{
    const ControlMisses& control = missesOf(report, componentNum);
    if (control.units > 0)
        return share(control.missed, control.units);
    return componentNum == roster::powerButton ? "never tested" : "not tested here";
}

QString controlRows(const Report& report)
{
    QString rows;
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c)
        rows += html::row(
            {{controlnames::control(c)}, {QString::number(c), "number"}, {missedText(report, c)}});
    return rows;
}

QString endedRows(const Report& report)
{
    const int all = report.total.endedFirst;
    QString rows;
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c)
        if (const int units = missesOf(report, c).endedHere)
            rows += html::row({{controlnames::control(c)},
                               {QString::number(c), "number"},
                               {share(units, all)},
                               {{}, {}, chart::share(units, all)}});
    return rows;
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

QString worstPictures(const Report& report, const QVector<int>& worst)
{
    QString boxes;
    for (const int c : worst) {
        const QString name = QString("%1 (component %2)").arg(controlnames::control(c)).arg(c);
        const QString missed = "Missed by " + missedText(report, c);
        boxes +=
            html::element("div", html::element("h3", name) + html::element("p", missed, "quiet") +
                                     chart::bands(c, missesOf(report, c)));
    }
    return boxes;
}

QString bandRows(const Report& report, const QVector<int>& worst)
{
    QString rows;
    for (const int c : worst)
        for (int band = 0; band < missesOf(report, c).missedBands.size(); ++band)
            rows += html::row(
                {{controlnames::control(c)},
                 {controlnames::band(c, band)},
                 {figuretext::count(missesOf(report, c).missedBands.at(band)), "number"}});
    return rows;
}
} // namespace

Parts controlParts(const Report& report)
{
    const QVector<int> missed = missedControls(report);
    const QVector<int> worst = missed.mid(0, worstCount);
    int all = 0;
    for (const int c : missed)
        all += missesOf(report, c).missed;
    const auto missedCells = [&, sum = 0](int c) mutable {
        sum += missesOf(report, c).missed;
        return Cells{{controlnames::control(c)},
                     {missedText(report, c)},
                     {percent(missesOf(report, c).missed, all), "number"},
                     {percent(sum, all), "number"}};
    };
    return {{"surface", chart::surface(report)},
            {"controls", controlRows(report)},
            {"moreMissed", figuretext::ifAny(missed.size() - mostParetoBars, figuretext::count)},
            {"pareto", chart::pareto(report, missed.mid(0, mostParetoBars), all)},
            {"misses", html::rows(missed, missedCells)},
            {"worst", worstPictures(report, worst)},
            {"bands", bandRows(report, worst)},
            {"endedAt", endedRows(report)}};
}
