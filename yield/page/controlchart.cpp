// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/chart.h"
#include "yield/page/figuretext.h"
#include "yield/page/scale.h"
#include "yield/page/svg.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr double width = 1040;
constexpr double left = 46;

double percentOf(int part, int whole)
{
    return 100.0 * part / whole;
}

double yieldOf(const Tally& tally)
{
    return percentOf(tally.passedFirst, tally.units);
}

/// A multiple of ten below all yields of an axis, in percent.
double beginBelow(double lowestYield)
{
    return std::clamp(std::floor((lowestYield - 1) / 10) * 10, 0.0, 80.0);
}

using Run = QVector<Timeline::Period>;

/// The periods with units, parted where one without units lies between them.
QVector<Run> runsOf(const Timeline& timeline)
{
    QVector<Run> runs;
    for (const Timeline::Period& period : timeline.periods) {
        if (runs.isEmpty() || runs.last().last().slot + 1 != period.slot)
            runs.append(Run());
        runs.last().append(period);
    }
    return runs;
}

/// The yield of what lies outside its limits is a triangle that points away from them.
void drawYield(Svg& svg, QPointF centre, Verdict verdict, const QString& hover)
{
    if (verdict == Verdict::Within)
        svg.circle(centre, 4.5, "dot", hover);
    else
        svg.triangle(centre, verdict == Verdict::Above,
                     verdict == Verdict::Above ? "above" : "below", hover);
}

/// Where things are in the picture of a timeline.
struct Axes {
    double pitch;
    Scale yields;
    Scale units;

    double x(const Timeline::Period& period) const { return left + pitch * (period.slot + 0.5); }
};

Axes axesOf(const Timeline& timeline, const Tally& all)
{
    // All yields are on the axis, and the limits of the period with most units.
    double lowest = yieldOf(all);
    Timeline::Period busiest = timeline.periods.first();
    for (const Timeline::Period& period : timeline.periods) {
        lowest = std::min(lowest, yieldOf(period.tally));
        if (period.tally.units > busiest.tally.units)
            busiest = period;
    }
    const double most = busiest.tally.units;
    lowest = std::min(lowest, percentOf(busiest.limits.low, busiest.tally.units));
    return {
        (width - left) / timeline.length, {16, 196, beginBelow(lowest), 100}, {236, 290, 0, most}};
}

void drawRun(Svg& svg, const Run& run, const Axes& axes)
{
    QVector<QPointF> low;
    QVector<QPointF> high;
    QVector<QPointF> yields;
    for (const Timeline::Period& period : run) {
        const int units = period.tally.units;
        const double lowest = std::max(percentOf(period.limits.low, units), axes.yields.lowest);
        const double bottom = axes.yields.at(lowest);
        const double top = axes.yields.at(percentOf(period.limits.high, units));
        const double begin = axes.x(period) - axes.pitch / 2;
        svg.rect({begin, top, axes.pitch, bottom - top}, "within");
        low << QPointF(begin, bottom) << QPointF(begin + axes.pitch, bottom);
        high << QPointF(begin, top) << QPointF(begin + axes.pitch, top);
        yields << QPointF(axes.x(period), axes.yields.at(yieldOf(period.tally)));
    }
    svg.polyline(low, "limit");
    svg.polyline(high, "limit");
    svg.polyline(yields, "trend");
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

/// The number of units as a bar, and the yield as a mark.
void drawPeriod(Svg& svg, const Timeline::Period& period, const Axes& axes)
{
    const Tally& tally = period.tally;
    const Verdict verdict = verdictOn(tally, period.limits);
    const QString hover = QString("%1: %2, first-pass yield %3")
                              .arg(period.name, figuretext::units(tally.units),
                                   figuretext::share(tally.passedFirst, tally.units));
    const double barWidth = std::min(axes.pitch * 0.7, 40.0);
    const double top = axes.units.at(tally.units);
    const QPointF centre(axes.x(period), axes.yields.at(yieldOf(tally)));
    svg.rect({centre.x() - barWidth / 2, top, barWidth, axes.units.bottom - top}, "bar", hover);
    drawYield(svg, centre, verdict, hover);
    if (verdict != Verdict::Within)
        svg.text(centre + QPointF(0, verdict == Verdict::Below ? 22 : -13),
                 figuretext::percent(tally.passedFirst, tally.units), "value middle");
}
} // namespace

void chart::drawTimeline(Html& html, const Timeline& timeline, const Tally& all)
{
    const Axes axes = axesOf(timeline, all);
    constexpr double labelWidth = 56;
    const int labelStep = std::max(1, static_cast<int>(std::ceil(labelWidth / axes.pitch)));
    const double bottom = axes.units.bottom;

    Svg svg(html, {width, bottom + 26}, "First-pass yield and units by " + timeline.unit);
    drawPercentAxis(svg, axes.yields);
    svg.line({left, bottom}, {width, bottom}, "axis");
    svg.text({left - 8, axes.units.top + 8}, figuretext::count(qRound(axes.units.highest)),
             "label end");
    svg.text({left - 8, bottom}, "units", "label end");
    const QVector<Run> runs = runsOf(timeline);
    for (const Run& run : runs)
        drawRun(svg, run, axes);
    const double centre = axes.yields.at(yieldOf(all));
    svg.line({left, centre}, {width, centre}, "centre");
    for (const Timeline::Period& period : timeline.periods) {
        drawPeriod(svg, period, axes);
        if (period.slot % labelStep == 0)
            svg.text({axes.x(period), bottom + 18}, period.shortName, "label middle");
    }
}

double chart::axisBegin(const Report& report)
{
    double lowest = yieldOf(report.total);
    for (const StationReport& station : report.stations)
        lowest = std::min(lowest, yieldOf(station.tally));
    return beginBelow(lowest);
}

void chart::drawStation(Html& html, const StationReport& station, const Tally& all,
                        double axisBegin)
{
    constexpr double chartWidth = 260;
    constexpr double height = 24;
    constexpr double margin = 8;
    const auto at = [axisBegin](double percent) {
        const double place = (std::max(percent, axisBegin) - axisBegin) / (100 - axisBegin);
        return margin + place * (chartWidth - 2 * margin);
    };
    const Tally& tally = station.tally;
    const double low = at(percentOf(station.limits.low, tally.units));
    const double high = at(percentOf(station.limits.high, tally.units));
    const double centre = at(yieldOf(all));
    Svg svg(html, {chartWidth, height},
            QString("First-pass yield %1, limits %2")
                .arg(figuretext::share(tally.passedFirst, tally.units),
                     figuretext::limits(station.limits, tally.units)));
    svg.line({margin, height / 2}, {chartWidth - margin, height / 2}, "grid");
    svg.rect({low, 3, high - low, height - 6}, "within");
    svg.line({low, 3}, {low, height - 3}, "limit");
    svg.line({high, 3}, {high, height - 3}, "limit");
    svg.line({centre, 0}, {centre, height}, "centre");
    drawYield(svg, {at(yieldOf(tally)), height / 2}, verdictOn(tally, station.limits), {});
}
