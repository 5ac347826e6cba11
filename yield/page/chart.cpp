// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/chart.h"

#include "yield/logs/controlnames.h"
#include "yield/page/figuretext.h"
#include "yield/page/scale.h"
#include "yield/page/svg.h"

#include <QStringList>

#include <algorithm>

namespace
{
constexpr double width = 1040;
constexpr double left = 46;
} // namespace

void chart::drawPareto(Html& html, const QVector<ParetoBar>& bars, int all)
{
    if (bars.isEmpty())
        return;
    // Both scales end at all misses, so that the line starts on the first bar.
    const Scale units{14, 246, 0, static_cast<double>(all)};
    const Scale shares{14, 246, 0, 100};
    constexpr double right = 46;
    const double pitch = std::min((width - left - right) / bars.size(), 120.0);
    const double barWidth = pitch * 0.66;
    const double end = left + pitch * bars.size();

    Svg svg(html, {width, 290}, "Units that missed each control, most missed first");
    for (int percent = 0; percent <= 100; percent += 20) {
        const double y = shares.at(percent);
        svg.line({left, y}, {end, y}, percent == 0 ? "axis" : "grid");
        svg.text({end + 8, y + 4}, QString("%1 %").arg(percent), "label");
    }
    QVector<QPointF> points;
    QStringList hovers;
    int sum = 0;
    for (int i = 0; i < bars.size(); ++i) {
        const ParetoBar& bar = bars.at(i);
        const QRectF area(QPointF(left + pitch * i + (pitch - barWidth) / 2, units.at(bar.missed)),
                          QPointF(left + pitch * i + (pitch + barWidth) / 2, units.bottom));
        svg.rect(area, "bar",
                 QString("%1: %2 of all misses").arg(bar.name, figuretext::share(bar.missed, all)));
        svg.text({area.center().x(), units.bottom + 18}, bar.name, "label middle");
        svg.text({area.center().x(), units.bottom + 34}, figuretext::count(bar.missed),
                 "value middle");
        sum += bar.missed;
        points.append({area.right(), units.at(sum)});
        hovers.append(
            QString("Up to %1: %2 of all misses").arg(bar.name, figuretext::share(sum, all)));
    }
    svg.polyline(points, "trend");
    for (int i = 0; i < bars.size(); ++i)
        svg.circle(points.at(i), 4, "dot", hovers.at(i));
}

void chart::drawBands(Html& html, int componentNum, const ControlMisses& control)
{
    const bool isButton = roster::kindOf(componentNum) == roster::Kind::Button;
    const auto& bands = control.missedBands;
    const int most = std::max(1, *std::max_element(bands.cbegin(), bands.cend()));
    const Scale units{18, 96, 0, static_cast<double>(most)};
    constexpr double chartWidth = 330;
    const double pitch = isButton ? 90 : chartWidth / bands.size();

    Svg svg(html, {chartWidth, 118}, "Missed bands of " + controlnames::control(componentNum));
    svg.line({0, units.bottom}, {pitch * bands.size(), units.bottom}, "axis");
    for (int band = 0; band < bands.size(); ++band) {
        const double x = pitch * (band + 0.5);
        const double top = units.at(bands.at(band));
        const double barWidth = std::min(pitch * 0.7, 40.0);
        const QString name = controlnames::band(componentNum, band);
        svg.rect({x - barWidth / 2, top, barWidth, units.bottom - top}, "bar",
                 QString("%1: missed by %2").arg(name, figuretext::units(bands.at(band))));
        if (bands.at(band) > 0)
            svg.text({x, top - 4}, figuretext::count(bands.at(band)), "value middle");
        svg.text({x, units.bottom + 15}, isButton ? name : name.section(QLatin1Char(' '), 0, 0),
                 "label middle");
    }
}

void chart::drawShare(Html& html, int part, int whole)
{
    constexpr double chartWidth = 260;
    constexpr double height = 14;
    Svg svg(html, {chartWidth, height}, figuretext::share(part, whole));
    svg.rect({0, 0, chartWidth * part / whole, height}, "bar");
    svg.line({0, 0}, {0, height}, "axis");
}
