// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/chart.h"

#include "yield/logs/controlnames.h"
#include "yield/page/figuretext.h"
#include "yield/page/svg.h"

#include <QStringList>

#include <algorithm>
#include <cmath>

namespace
{
constexpr double width = 1040;
constexpr double left = 46;

/// A linear scale along y: `lowest` is drawn at `bottom`, `highest` at `top`.
struct Scale {
    double top;
    double bottom;
    double lowest;
    double highest;

    double at(double value) const
    {
        return bottom - (value - lowest) / (highest - lowest) * (bottom - top);
    }
};

double yieldOf(const Tally& tally)
{
    return 100.0 * tally.passedFirst / tally.units;
}

/// The lower end of an axis of yields, in percent: a multiple of ten below all of them.
double axisBegin(double lowestYield)
{
    return std::clamp(std::floor((lowestYield - 1) / 10) * 10, 0.0, 80.0);
}

void drawPercentAxis(Svg& svg, const Scale& scale)
{
    const int step = scale.highest - scale.lowest > 50 ? 20 : 10;
    for (int percent = 100; percent >= scale.lowest; percent -= step) {
        const double y = scale.at(percent);
        svg.line({left, y}, {width, y}, "grid");
        svg.text({left - 8, y + 4}, QString("%1 %").arg(percent), "label end");
    }
}
} // namespace

void chart::drawTimeline(Html& html, const Timeline& timeline)
{
    double lowest = 100;
    int mostUnits = 1;
    for (const auto& period : timeline.periods) {
        lowest = std::min(lowest, yieldOf(period.tally));
        mostUnits = std::max(mostUnits, period.tally.units);
    }
    const Scale yields{16, 176, axisBegin(lowest), 100};
    const Scale units{206, 270, 0, static_cast<double>(mostUnits)};
    const double pitch = (width - left) / timeline.length;
    const double barWidth = std::min(pitch * 0.7, 40.0);
    constexpr double labelWidth = 56;
    const int labelStep = std::max(1, static_cast<int>(std::ceil(labelWidth / pitch)));

    Svg svg(html, {width, 296}, "First-pass yield and units by " + timeline.unit);
    drawPercentAxis(svg, yields);
    svg.line({left, units.bottom}, {width, units.bottom}, "axis");
    svg.text({left - 8, units.top + 8}, figuretext::count(mostUnits), "label end");
    svg.text({left - 8, units.bottom}, "units", "label end");

    const auto xOf = [&](const Timeline::Period& period) {
        return left + pitch * (period.slot + 0.5);
    };
    QVector<QPointF> points;
    for (const auto& period : timeline.periods)
        points.append({xOf(period), yields.at(yieldOf(period.tally))});
    svg.polyline(points, "trend");
    for (const auto& period : timeline.periods) {
        const double x = xOf(period);
        const Tally& tally = period.tally;
        const QString hover = QString("%1: %2, first-pass yield %3")
                                  .arg(period.name, figuretext::units(tally.units),
                                       figuretext::share(tally.passedFirst, tally.units));
        const double top = units.at(tally.units);
        svg.rect({x - barWidth / 2, top, barWidth, units.bottom - top}, "bar", hover);
        svg.circle({x, yields.at(yieldOf(tally))}, 4, "dot", hover);
        if (period.slot % labelStep == 0)
            svg.text({x, units.bottom + 18}, period.shortName, "label middle");
    }
}

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

chart::Interval chart::yieldInterval(int passed, int units)
{
    constexpr double z = 1.959964; // 95 % of a normal distribution lie within z deviations
    const double n = units;
    const double p = passed / n;
    const double centre = (p + z * z / (2 * n)) / (1 + z * z / n);
    const double half = z / (1 + z * z / n) * std::sqrt(p * (1 - p) / n + z * z / (4 * n * n));
    return {centre - half, centre + half};
}

void chart::drawInterval(Html& html, int passed, int units, double axisBegin)
{
    constexpr double chartWidth = 260;
    constexpr double height = 20;
    constexpr double margin = 6;
    const auto at = [axisBegin](double fraction) {
        const double place = (std::max(fraction, axisBegin) - axisBegin) / (1 - axisBegin);
        return QPointF(margin + place * (chartWidth - 2 * margin), height / 2);
    };
    const Interval interval = yieldInterval(passed, units);
    Svg svg(html, {chartWidth, height}, "First-pass yield " + figuretext::share(passed, units));
    svg.line(at(axisBegin), at(1), "grid");
    svg.line(at(interval.low), at(interval.high), "interval");
    svg.circle(at(static_cast<double>(passed) / units), 5, "dot",
               QString("%1; true yield between %2 % and %3 %")
                   .arg(figuretext::share(passed, units))
                   .arg(100 * interval.low, 0, 'f', 1)
                   .arg(100 * interval.high, 0, 'f', 1));
}
