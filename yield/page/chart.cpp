// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/chart.h"

#include "yield/logs/controlnames.h"
#include "yield/page/figuretext.h"
#include "yield/page/markup.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr double width = 1040;
constexpr double left = 46;
constexpr double right = 24; // half a label, beyond the width

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
    double at(int part, int whole) const { return at(100.0 * part / whole); }
    double at(const Tally& tally) const { return at(tally.passedFirst, tally.units); }
};

QString percentAxis(const Scale& scale)
{
    constexpr int step = 10;
    QString axis;
    for (int percent = 100; percent >= scale.lowest; percent -= step) {
        const double y = scale.at(percent);
        axis += svg::line({{left, y}, {width, y}}, "grid") +
                svg::text({left - 8, y + 4}, QString("%1 %").arg(percent), "label end");
    }
    return axis;
}

/// A bar as high as its place, with room on either side.
QString bar(const QRectF& place)
{
    const double room = std::max(place.width() * 0.15, (place.width() - 84) / 2);
    return svg::rect(place.adjusted(room, 0, -room, 0), "bar");
}

/// A bar for so many units, its name below and the number above; ground: where it stands.
QString namedBar(QRectF ground, int units, const Scale& scale, const QString& name)
{
    const double x = ground.center().x();
    ground.setTop(scale.at(units));
    return bar(ground) +
           svg::text({x, ground.top() - 4}, figuretext::ifAny(units, figuretext::count),
                     "value middle") +
           svg::text({x, ground.bottom() + 15}, name, "label middle");
}

/// The yield of what lies outside its limits is a triangle that points away from them.
QString yieldMark(QPointF centre, Verdict verdict)
{
    if (verdict == Verdict::Within)
        return svg::circle(centre, "dot");
    const bool isAbove = verdict == Verdict::Above;
    return svg::triangle(centre, isAbove, isAbove ? "above" : "below");
}

/// Where things are in the picture of a timeline.
struct Axes {
    double pitch;
    Scale yields;
    Scale units;

    double begin(const Timeline::Period& period) const { return left + pitch * period.slot; }
    QPointF mark(const Timeline::Period& period) const
    {
        return {begin(period) + pitch / 2, yields.at(period.tally)};
    }
};

Axes axesOf(const Timeline& timeline, const Tally& all)
{
    int most = 0;
    double lowest = 100;
    for (const Timeline::Period& period : timeline.periods) {
        most = std::max(most, period.tally.units);
        lowest = std::min(lowest, 100.0 * period.tally.passedFirst / period.tally.units);
    }
    // All yields are on the axis, and the limits of the period with most units.
    lowest = std::min(lowest, 100.0 * limitsOf(most, all).low / most);
    const double begin = std::clamp(std::floor((lowest - 1) / 10) * 10, 0.0, 80.0);
    return {(width - left) / timeline.length,
            {begin, 100, 196, 16},
            {0, static_cast<double>(most), 290, 236}};
}

/// The field between the limits of a period.
QString limitsField(const Timeline::Period& period, const Tally& all, const Axes& axes)
{
    const int units = period.tally.units;
    const Limits limits = limitsOf(units, all);
    const QRectF field(QPointF(axes.begin(period), axes.yields.at(limits.high, units)),
                       QPointF(axes.begin(period) + axes.pitch, axes.yields.at(limits.low, units)));
    return svg::rect(field, "within") + svg::line({field.topLeft(), field.topRight()}, "limit") +
           svg::line({field.bottomLeft(), field.bottomRight()}, "limit");
}

/// The number of units as a bar, and the yield as a mark.
QString barAndMark(const Timeline::Period& period, const Tally& all, const Axes& axes)
{
    const Tally& tally = period.tally;
    const Verdict verdict = verdictOn(tally, all);
    const QString hover = QString("%1: %2, first-pass yield %3")
                              .arg(period.name, figuretext::units(tally.units),
                                   figuretext::share(tally.passedFirst, tally.units));
    const double top = axes.units.at(tally.units);
    const QRectF place(axes.begin(period), top, axes.pitch, axes.units.begin - top);
    const QPointF centre = axes.mark(period);
    QString picture = svg::titled(hover, bar(place) + yieldMark(centre, verdict));
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
    constexpr double letterWidth = 8;
    const int labelStep = static_cast<int>(std::ceil(letterWidth * timeline.letters / axes.pitch));
    const double bottom = axes.units.begin;
    const double centre = axes.yields.at(all);

    QString fields;
    QString marks = svg::line({{left, centre}, {width, centre}}, "centre");
    const Timeline::Period* previous = nullptr;
    for (const Timeline::Period& period : timeline.periods) {
        fields += limitsField(period, all, axes);
        // Not across periods without units.
        if (previous && previous->slot + 1 == period.slot)
            marks += svg::line({axes.mark(*previous), axes.mark(period)}, "trend");
        marks += barAndMark(period, all, axes);
        if (period.slot % labelStep == 0)
            marks +=
                svg::text({axes.mark(period).x(), bottom + 18}, period.shortName, "label middle");
        previous = &period;
    }
    return svg::picture(
        {width + right, bottom + 26}, "First-pass yield and units by " + timeline.unit,
        percentAxis(axes.yields) + svg::line({{left, bottom}, {width, bottom}}, "axis") +
            svg::text({left - 8, axes.units.end + 8}, figuretext::count(qRound(axes.units.highest)),
                      "label end") +
            svg::text({left - 8, bottom}, "units", "label end") + fields + marks);
}

QString chart::pareto(const QVector<ControlMisses>& controls, int allMisses)
{
    if (controls.isEmpty())
        return {};
    // Both scales end at all misses, so that the line starts on the first bar.
    const Scale units{0, static_cast<double>(allMisses), 246, 14};
    const double pitch = std::min((width - left) / controls.size(), 120.0);
    QString bars;
    QString dots;
    QVector<QPointF> sums;
    int sum = 0;
    for (const ControlMisses& control : controls) {
        const QRectF place(left + pitch * sums.size(), units.begin, pitch, 0);
        sum += control.missed;
        sums.append({place.center().x() + pitch * 0.35, units.at(sum)});
        bars += namedBar(place, control.missed, units, controlnames::control(control.componentNum));
        dots += svg::circle(sums.last(), "dot");
    }
    return svg::picture({width, 272}, "Units that missed each control, most missed first",
                        percentAxis({0, 100, units.begin, units.end}) +
                            svg::line({{left, units.begin}, {width, units.begin}}, "axis") + bars +
                            svg::line(sums, "trend") + dots);
}

QString chart::bands(const ControlMisses& control)
{
    const auto& bands = control.missedBands;
    const int most = *std::max_element(bands.cbegin(), bands.cend());
    const Scale units{0, static_cast<double>(most), 96, 18};
    constexpr double chartWidth = 330;
    const double pitch = chartWidth / bands.size();

    QString picture = svg::line({{0, units.begin}, {chartWidth, units.begin}}, "axis");
    for (int band = 0; band < bands.size(); ++band)
        picture += namedBar({pitch * band, units.begin, pitch, 0}, bands.at(band), units,
                            controlnames::band(control.componentNum, band).section(' ', 0, 0));
    return svg::picture({chartWidth, 118},
                        "Missed bands of " + controlnames::control(control.componentNum), picture);
}
