// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/chart.h"

#include "yield/logs/controlnames.h"
#include "yield/page/figuretext.h"
#include "yield/page/svg.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace
{
constexpr double width = 1040;
constexpr double left = 46;
constexpr double cellWidth = 260;

/// A linear scale: `lowest`, and what is lower, is drawn at `begin`, `highest` at `end`.
struct Scale {
    double lowest;
    double highest;
    double begin;
    double end;

    double at(double value) const
    {
        return begin + (std::max(value, lowest) - lowest) / (highest - lowest) * (end - begin);
    }
};

double percentOf(int part, int whole)
{
    return 100.0 * part / std::max(whole, 1);
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

QString percentAxis(const Scale& scale)
{
    const int step = scale.highest - scale.lowest > 50 ? 20 : 10;
    QString axis;
    for (int percent = 100; percent >= scale.lowest; percent -= step) {
        const double y = scale.at(percent);
        axis += svg::line({{left, y}, {width, y}}, "grid") +
                svg::text({left - 8, y + 4}, QString("%1 %").arg(percent), "label end");
    }
    return axis;
}

/// A bar as high as its place, with room on either side.
QString bar(const QRectF& place, const QString& hover)
{
    const double room = std::max(place.width() * 0.15, (place.width() - 84) / 2);
    return svg::rect(place.adjusted(room, 0, -room, 0), "bar", hover);
}

/// The yield of what lies outside its limits is a triangle that points away from them.
QString yieldMark(QPointF centre, Verdict verdict, const QString& hover = {})
{
    if (verdict == Verdict::Within)
        return svg::circle(centre, "dot", hover);
    const bool isAbove = verdict == Verdict::Above;
    return svg::triangle(centre, isAbove, isAbove ? "above" : "below", hover);
}

/// Where things are in the picture of a timeline.
struct Axes {
    double pitch;
    Scale yields;
    Scale units;

    double begin(const Timeline::Period& period) const { return left + pitch * period.slot; }
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
        (width - left) / timeline.length, {beginBelow(lowest), 100, 196, 16}, {0, most, 290, 236}};
}

/// The fields between the limits, and lines that end where a period has no units.
QString limitsAndTrend(const Timeline& timeline, const Axes& axes)
{
    QString picture;
    QVector<QPointF> low;
    QVector<QPointF> high;
    QVector<QPointF> yields;
    for (int i = 0; i < timeline.periods.size(); ++i) {
        const Timeline::Period& period = timeline.periods.at(i);
        const int units = period.tally.units;
        const double begin = axes.begin(period);
        const QRectF within(
            {begin, axes.yields.at(percentOf(period.limits.high, units))},
            QPointF(begin + axes.pitch, axes.yields.at(percentOf(period.limits.low, units))));
        picture += svg::rect(within, "within");
        low << within.bottomLeft() << within.bottomRight();
        high << within.topLeft() << within.topRight();
        yields << QPointF(within.center().x(), axes.yields.at(yieldOf(period.tally)));
        const bool isLast = i + 1 == timeline.periods.size();
        if (isLast || timeline.periods.at(i + 1).slot > period.slot + 1)
            picture += svg::line(std::exchange(low, {}), "limit") +
                       svg::line(std::exchange(high, {}), "limit") +
                       svg::line(std::exchange(yields, {}), "trend");
    }
    return picture;
}

/// The number of units as a bar, and the yield as a mark.
QString barAndMark(const Timeline::Period& period, const Axes& axes)
{
    const Tally& tally = period.tally;
    const Verdict verdict = verdictOn(tally, period.limits);
    const QString hover = QString("%1: %2, first-pass yield %3")
                              .arg(period.name, figuretext::units(tally.units),
                                   figuretext::share(tally.passedFirst, tally.units));
    const double top = axes.units.at(tally.units);
    const QRectF place(axes.begin(period), top, axes.pitch, axes.units.begin - top);
    const QPointF centre(place.center().x(), axes.yields.at(yieldOf(tally)));
    QString picture = bar(place, hover) + yieldMark(centre, verdict, hover);
    if (verdict != Verdict::Within)
        picture += svg::text(centre + QPointF(0, verdict == Verdict::Below ? 22 : -13),
                             figuretext::percent(tally.passedFirst, tally.units), "value middle");
    return picture;
}
} // namespace

QString chart::timeline(const Timeline& timeline, const Tally& all)
{
    if (timeline.periods.isEmpty())
        return {};
    const Axes axes = axesOf(timeline, all);
    constexpr double labelWidth = 56;
    const int labelStep = std::max(1, static_cast<int>(std::ceil(labelWidth / axes.pitch)));
    const double bottom = axes.units.begin;
    const double centre = axes.yields.at(yieldOf(all));
    const QString mostUnits = figuretext::count(qRound(axes.units.highest));

    QString picture =
        percentAxis(axes.yields) + svg::line({{left, bottom}, {width, bottom}}, "axis") +
        svg::text({left - 8, axes.units.end + 8}, mostUnits, "label end") +
        svg::text({left - 8, bottom}, "units", "label end") + limitsAndTrend(timeline, axes) +
        svg::line({{left, centre}, {width, centre}}, "centre");
    for (const Timeline::Period& period : timeline.periods) {
        picture += barAndMark(period, axes);
        if (period.slot % labelStep == 0)
            picture += svg::text({axes.begin(period) + axes.pitch / 2, bottom + 18},
                                 period.shortName, "label middle");
    }
    return svg::picture({width, bottom + 26}, "First-pass yield and units by " + timeline.unit,
                        picture);
}

double chart::axisBegin(const Report& report)
{
    double lowest = yieldOf(report.total);
    for (const StationReport& station : report.stations)
        lowest = std::min(lowest, yieldOf(station.tally));
    return beginBelow(lowest);
}

QString chart::station(const StationReport& station, const Report& report)
{
    constexpr double height = 24;
    constexpr double margin = 8;
    const Scale yields{axisBegin(report), 100, margin, cellWidth - margin};
    const Tally& tally = station.tally;
    const double low = yields.at(percentOf(station.limits.low, tally.units));
    const double high = yields.at(percentOf(station.limits.high, tally.units));
    const double centre = yields.at(yieldOf(report.total));
    const QPointF mark(yields.at(yieldOf(tally)), height / 2);
    const QString label = QString("First-pass yield %1, limits %2")
                              .arg(figuretext::share(tally.passedFirst, tally.units),
                                   figuretext::limits(station.limits, tally.units));
    return svg::picture({cellWidth, height}, label,
                        svg::line({{yields.begin, height / 2}, {yields.end, height / 2}}, "grid") +
                            svg::rect({low, 3, high - low, height - 6}, "within") +
                            svg::line({{low, 3}, {low, height - 3}}, "limit") +
                            svg::line({{high, 3}, {high, height - 3}}, "limit") +
                            svg::line({{centre, 0}, {centre, height}}, "centre") +
                            yieldMark(mark, verdictOn(tally, station.limits)));
}

QString chart::pareto(const Report& report, const QVector<int>& controls, int allMisses)
{
    if (controls.isEmpty())
        return {};
    // Both scales end at all misses, so that the line starts on the first bar.
    const Scale units{0, static_cast<double>(allMisses), 246, 14};
    const double pitch = std::min((width - left) / controls.size(), 120.0);
    const QString hover = "%1: %2 of all misses";

    QString bars;
    QString dots;
    QVector<QPointF> sums;
    int sum = 0;
    for (const int c : controls) {
        const QString name = controlnames::control(c);
        const int missed = report.controls.at(static_cast<std::size_t>(c)).missed;
        const double top = units.at(missed);
        const QRectF place(left + pitch * sums.size(), top, pitch, units.begin - top);
        const double x = place.center().x();
        sum += missed;
        sums.append({x + pitch * 0.35, units.at(sum)});
        bars += bar(place, hover.arg(name, figuretext::share(missed, allMisses))) +
                svg::text({x, units.begin + 18}, name, "label middle") +
                svg::text({x, units.begin + 34}, figuretext::count(missed), "value middle");
        dots += svg::circle(sums.last(), "dot",
                            hover.arg("Up to " + name, figuretext::share(sum, allMisses)));
    }
    return svg::picture({width, 290}, "Units that missed each control, most missed first",
                        percentAxis({0, 100, units.begin, units.end}) +
                            svg::line({{left, units.begin}, {width, units.begin}}, "axis") + bars +
                            svg::line(sums, "trend") + dots);
}

QString chart::bands(int componentNum, const ControlMisses& control)
{
    const bool isButton = roster::kindOf(componentNum) == roster::Kind::Button;
    const auto& bands = control.missedBands;
    const int most = std::max(1, *std::max_element(bands.cbegin(), bands.cend()));
    const Scale units{0, static_cast<double>(most), 96, 18};
    constexpr double chartWidth = 330;
    const double pitch = isButton ? 90 : chartWidth / bands.size();

    QString picture = svg::line({{0, units.begin}, {pitch * bands.size(), units.begin}}, "axis");
    for (int band = 0; band < bands.size(); ++band) {
        const int missed = bands.at(band);
        const double top = units.at(missed);
        const QRectF place(pitch * band, top, pitch, units.begin - top);
        const double x = place.center().x();
        const QString name = controlnames::band(componentNum, band);
        picture +=
            bar(place, QString("%1: missed by %2").arg(name, figuretext::units(missed))) +
            svg::text({x, top - 4}, figuretext::ifAny(missed, figuretext::count), "value middle") +
            svg::text({x, units.begin + 15}, isButton ? name : name.section(QLatin1Char(' '), 0, 0),
                      "label middle");
    }
    return svg::picture({chartWidth, 118}, "Missed bands of " + controlnames::control(componentNum),
                        picture);
}

QString chart::share(int part, int whole)
{
    constexpr double height = 14;
    return svg::picture({cellWidth, height}, figuretext::share(part, whole),
                        svg::rect({0, 0, cellWidth * part / whole, height}, "bar") +
                            svg::line({{0, 0}, {0, height}}, "axis"));
}
