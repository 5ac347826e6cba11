// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/chart.h"

#include "yield/logs/controlnames.h"
#include "yield/page/cells.h"
#include "yield/page/markup.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr double width = 1040;
constexpr double axisLeft = 46;
constexpr double rightMargin = 24; // half a label, beyond the axis

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
        axis += svg::line({{axisLeft, y}, {width, y}}, "grid") +
                svg::text({axisLeft - 8, y + 4}, QString("%1 %").arg(percent), "label end");
    }
    return axis;
}

/// A bar as high as the area, with a margin on either side.
QString bar(const QRectF& area)
{
    constexpr double maxWidth = 84;
    const double margin = std::max(area.width() * 0.15, (area.width() - maxWidth) / 2);
    return svg::rect(area.adjusted(margin, 0, -margin, 0), "bar");
}

/// A bar for that many units, its name below and the number above; area: one without height on the
/// axis.
QString namedBar(QRectF area, int units, const Scale& scale, const QString& name)
{
    const double x = area.center().x();
    area.setTop(scale.at(units));
    const QString value = units > 0 ? cells::countText(units) : QString();
    return bar(area) + svg::text({x, area.top() - 4}, value, "value middle") +
           svg::text({x, area.bottom() + 15}, name, "label middle");
}

/// A dot within the control limits; outside, a triangle that points away from them.
QString yieldMark(QPointF centre, Position position)
{
    switch (position) {
    case Position::BelowLcl:
        return svg::triangle(centre, svg::Tip::Down, "below");
    case Position::AboveUcl:
        return svg::triangle(centre, svg::Tip::Up, "above");
    case Position::Within:
        break;
    }
    return svg::circle(centre, "dot");
}

/// The axes of a timeline's chart.
struct Axes {
    double pitch;
    Scale yields;
    Scale units;

    double begin(const Timeline::Period& period) const { return axisLeft + pitch * period.slot; }
    QPointF mark(const Timeline::Period& period) const
    {
        return {begin(period) + pitch / 2, yields.at(period.tally)};
    }
};

Axes axesOf(const Timeline& timeline, const Tally& all)
{
    int maxUnits = 0;
    double lowest = 100;
    for (const Timeline::Period& period : timeline.periods) {
        maxUnits = std::max(maxUnits, period.tally.units);
        lowest = std::min(lowest, 100.0 * period.tally.passedFirst / period.tally.units);
    }
    // All yields are on the axis, and the control limits of the period with most units.
    lowest = std::min(lowest, 100.0 * controlLimits(maxUnits, all).lower / maxUnits);
    const double begin = std::clamp(std::floor((lowest - 1) / 10) * 10, 0.0, 80.0);
    return {(width - axisLeft) / timeline.slotCount,
            {begin, 100, 196, 28},
            {0, static_cast<double>(maxUnits), 290, 236}};
}

/// The area between the control limits of a period.
QString limitsArea(const Timeline::Period& period, const Tally& all, const Axes& axes)
{
    const int units = period.tally.units;
    const ControlLimits limits = controlLimits(units, all);
    const QRectF area(
        QPointF(axes.begin(period), axes.yields.at(limits.upper, units)),
        QPointF(axes.begin(period) + axes.pitch, axes.yields.at(limits.lower, units)));
    return svg::rect(area, "within") + svg::line({area.topLeft(), area.topRight()}, "limit") +
           svg::line({area.bottomLeft(), area.bottomRight()}, "limit");
}

/// The number of units as a bar, and the yield as a mark.
QString barAndMark(const Timeline::Period& period, const Tally& all, const Axes& axes)
{
    const Tally& tally = period.tally;
    const Position position = positionOf(tally, all);
    const QString hover = QString("%1: %2, first-pass yield %3")
                              .arg(period.name, cells::unitsText(tally.units),
                                   cells::share(tally.passedFirst, tally.units).fullText());
    const double top = axes.units.at(tally.units);
    const QRectF area(axes.begin(period), top, axes.pitch, axes.units.begin - top);
    const QPointF centre = axes.mark(period);
    const QString marks = svg::titled(hover, bar(area) + yieldMark(centre, position));
    if (position == Position::Within)
        return marks;
    const double textOffset = position == Position::BelowLcl ? 22 : -13;
    return marks + svg::text(centre + QPointF(0, textOffset),
                             cells::percentText(tally.passedFirst, tally.units), "value middle");
}

/// The axes and their labels.
QString frame(const Axes& axes)
{
    const double bottom = axes.units.begin;
    const QString maxUnits = cells::countText(qRound(axes.units.highest));
    return percentAxis(axes.yields) + svg::line({{axisLeft, bottom}, {width, bottom}}, "axis") +
           svg::text({axisLeft - 8, axes.units.end + 8}, maxUnits, "label end") +
           svg::text({axisLeft - 8, bottom}, "units", "label end");
}
} // namespace

QString chart::timeline(const Timeline& timeline, const Tally& all)
{
    if (timeline.periods.isEmpty())
        return {};
    const Axes axes = axesOf(timeline, all);
    constexpr double letterWidth = 8;
    const int labelStep =
        static_cast<int>(std::ceil(letterWidth * timeline.maxLabelLength / axes.pitch));
    const double bottom = axes.units.begin;

    const double centre = axes.yields.at(all);
    QString areas;
    QString marks = svg::line({{axisLeft, centre}, {width, centre}}, "centre");
    const Timeline::Period* previous = nullptr;
    for (const Timeline::Period& period : timeline.periods) {
        areas += limitsArea(period, all, axes);
        // Not across periods without units.
        if (previous && previous->slot + 1 == period.slot)
            marks += svg::line({axes.mark(*previous), axes.mark(period)}, "trend");
        marks += barAndMark(period, all, axes);
        if (period.slot % labelStep == 0)
            marks += svg::text({axes.mark(period).x(), bottom + 18}, period.label, "label middle");
        previous = &period;
    }
    return svg::chart({width + rightMargin, bottom + 26},
                      "First-pass yield and units by " + timeline.period,
                      frame(axes) + areas + marks);
}

QString chart::pareto(const QVector<ControlFailures>& controls, int allFailures)
{
    // Both scales end at all failures, so that the line starts on the first bar.
    const Scale units{0, static_cast<double>(allFailures), 246, 14};
    const double pitch = std::min((width - axisLeft) / controls.size(), 120.0);
    QString bars;
    QString dots;
    QVector<QPointF> sums;
    int sum = 0;
    for (const ControlFailures& control : controls) {
        const QRectF area(axisLeft + pitch * sums.size(), units.begin, pitch, 0);
        sum += control.failed;
        sums.append({area.center().x() + pitch * 0.35, units.at(sum)});
        bars += namedBar(area, control.failed, units, controlnames::control(control.componentNum));
        dots += svg::circle(sums.last(), "dot");
    }
    return svg::chart({width, 272}, "Failed units by control, most failures first",
                      percentAxis({0, 100, units.begin, units.end}) +
                          svg::line({{axisLeft, units.begin}, {width, units.begin}}, "axis") + bars +
                          svg::line(sums, "trend") + dots);
}

QString chart::bands(const ControlFailures& control)
{
    const auto& bands = control.missedBands;
    const int maxMissed = *std::max_element(bands.cbegin(), bands.cend());
    const Scale units{0, static_cast<double>(maxMissed), 96, 18};
    constexpr double chartWidth = 330;
    const double pitch = chartWidth / bands.size();

    QString elements = svg::line({{0, units.begin}, {chartWidth, units.begin}}, "axis");
    for (int band = 0; band < bands.size(); ++band)
        elements += namedBar({pitch * band, units.begin, pitch, 0}, bands.at(band), units,
                             controlnames::band(control.componentNum, band).section(' ', 0, 0));
    return svg::chart({chartWidth, 118},
                      "Missed bands of " + controlnames::control(control.componentNum), elements);
}
