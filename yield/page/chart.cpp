// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/chart.h"

#include "unit/panelplacement.h"
#include "yield/figures/timeline.h"
#include "yield/logs/controlnames.h"
#include "yield/page/markup.h"
#include "yield/page/tables.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr double width = 1040;
constexpr double axisLeft = 46;

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

/// A p-chart: its scales, and what it shows of each period.
struct YieldChart {
    QPointF markOf(const Timeline::Period& period) const
    {
        return {axisLeft + pitch * (period.slot + 0.5),
                yields.at(period.tally.passedFirst, period.tally.units)};
    }

    QString limitsArea(const Timeline::Period& period) const
    {
        const int count = period.tally.units;
        const ControlLimits limits = controlLimits(count, all);
        const double top = yields.at(limits.upper, count);
        const QRectF area(axisLeft + pitch * period.slot, top, pitch,
                          yields.at(limits.lower, count) - top);
        return svg::rect(area, "within") + svg::line({area.topLeft(), area.topRight()}, "limit") +
               svg::line({area.bottomLeft(), area.bottomRight()}, "limit");
    }

    QString barAndMark(const Timeline::Period& period) const
    {
        const QStringList marks{"below", "dot", "above"}; // as Position
        const Tally& tally = period.tally;
        const Position position = controlLimits(tally.units, all).positionOf(tally.passedFirst);
        const QString hover = QString("%1: %2, first-pass yield %3")
                                  .arg(period.name, cells::unitsText(tally.units),
                                       cells::share(tally.passedFirst, tally.units).fullText());
        const double top = units.at(tally.units);
        const QRectF area(axisLeft + pitch * period.slot, top, pitch, units.begin - top);
        return svg::titled(
            hover, bar(area) + svg::mark(markOf(period), marks.at(static_cast<int>(position))));
    }

    QString axes() const
    {
        const double bottom = units.begin;
        const double centreLine = yields.at(all.passedFirst, all.units);
        return percentAxis(yields) + svg::line({{axisLeft, bottom}, {width, bottom}}, "axis") +
               svg::text({axisLeft - 8, units.end + 8}, cells::countText(qRound(units.highest)),
                         "label end") +
               svg::text({axisLeft - 8, bottom}, "units", "label end") +
               svg::line({{axisLeft, centreLine}, {width, centreLine}}, "centre");
    }

    Tally all;
    double pitch = 0; ///< Of the periods.
    Scale yields{0, 100, 196, 28};
    Scale units{0, 0, 290, 236};
};

YieldChart withScales(const QVector<Timeline::Period>& periods, const Tally& all)
{
    YieldChart chart{all, (width - axisLeft) / (periods.last().slot + 1)};
    int maxUnits = 0;
    double lowest = 100;
    for (const Timeline::Period& period : periods) {
        maxUnits = std::max(maxUnits, period.tally.units);
        lowest = std::min(lowest, 100.0 * period.tally.passedFirst / period.tally.units);
    }
    // All yields are on the axis, and the control limits of the period with most units.
    lowest = std::min(lowest, 100.0 * controlLimits(maxUnits, all).lower / maxUnits);
    chart.yields.lowest = std::clamp(std::floor((lowest - 1) / 10) * 10, 0.0, 80.0);
    chart.units.highest = maxUnits;
    return chart;
}

/// The trend of the report, or the same chart of its stations.
QString yieldChart(const Timeline& timeline, const Tally& all)
{
    if (timeline.periods.isEmpty())
        return html::paragraph("None.");
    const YieldChart chart = withScales(timeline.periods, all);
    constexpr double letterWidth = 8;
    const int labelStep =
        static_cast<int>(std::ceil(letterWidth * timeline.maxLabelLength / chart.pitch));
    const double bottom = chart.units.begin;

    QString areas;
    QString marks;
    const Timeline::Period* previous = nullptr;
    for (const Timeline::Period& period : timeline.periods) {
        areas += chart.limitsArea(period);
        // Not across periods without units.
        if (previous && previous->slot + 1 == period.slot)
            marks += svg::line({chart.markOf(*previous), chart.markOf(period)}, "trend");
        marks += chart.barAndMark(period);
        if (period.slot % labelStep == 0)
            marks +=
                svg::text({chart.markOf(period).x(), bottom + 18}, period.label, "label middle");
        previous = &period;
    }
    // To the right of the axis there may be half a label.
    return svg::chart({0, 0, width + 24, bottom + 26},
                      "First-pass yield and units by " + timeline.period,
                      areas + chart.axes() + marks);
}

/// The highest percentage of failed units for each colour. The same on every page, so that pages
/// can be compared.
constexpr int maxPercentOfColour[] = {0, 1, 2, 5, 10, 100};

QString colourClass(int failed, int units)
{
    int step = 0;
    while (100.0 * failed > 1.0 * maxPercentOfColour[step] * units)
        ++step;
    return QString("failed%1").arg(step);
}

QRectF panelArea(int componentNum)
{
    const auto topLeft = panelPosition(componentNum);
    return topLeft ? QRectF(*topLeft, panelSize(roster::kindOf(componentNum))) : QRectF();
}

QString controlMark(const ControlFailures& control, const QRectF& area)
{
    const bool isTested = control.units > 0;
    const Cell failed = cells::share(control.failed, control.units);
    const QString colour = isTested ? colourClass(control.failed, control.units) : "untested";
    const QString hover = cells::control(control.componentNum).text + ": " + failed.fullText();
    const QPointF numberAt = area.center() - QPointF(0, 1);
    return svg::titled(hover, svg::rect(area.adjusted(1, 1, -1, -1), "control " + colour)) +
           svg::text(numberAt, QString::number(control.componentNum),
                     "number on-" + colour + " middle") +
           svg::text(numberAt + QPointF(0, 12), failed.text, "rate on-" + colour + " middle");
}
} // namespace

QString chart::trend(const Report& report)
{
    return yieldChart(timelineOf(report.days), report.total);
}

QString chart::stations(const Report& report)
{
    constexpr int lettersOfAxis = 120;
    const int maxLength = std::max(2, lettersOfAxis / std::max(1, report.stations.size()));
    Timeline timeline{"station", {}, maxLength};
    for (auto each = report.stations.cbegin(); each != report.stations.cend(); ++each) {
        const QString& name = each.key();
        // The ends of long names differ.
        const QString label = name.size() <= maxLength ? name : "…" + name.right(maxLength - 1);
        timeline.periods.append({2 * timeline.periods.size(), name, label, each->tally});
    }
    return yieldChart(timeline, report.total);
}

QString chart::pareto(const Report& report)
{
    constexpr int maxBars = 14;
    const auto controls = report.failedControls.mid(0, maxBars);
    if (controls.isEmpty())
        return html::paragraph("None.");
    // Both scales end at all failures, so that the line starts on the first bar.
    const Scale units{0, static_cast<double>(report.failureCount), 246, 14};
    const double pitch = std::min((width - axisLeft) / controls.size(), 120.0);
    QString elements = percentAxis({0, 100, units.begin, units.end}) +
                       svg::line({{axisLeft, units.begin}, {width, units.begin}}, "axis");
    QString dots;
    QVector<QPointF> sums;
    int sum = 0;
    for (const ControlFailures& control : controls) {
        const QRectF area(axisLeft + pitch * sums.size(), units.begin, pitch, 0);
        sum += control.failed;
        sums.append({area.center().x() + pitch * 0.35, units.at(sum)});
        elements +=
            namedBar(area, control.failed, units, controlnames::control(control.componentNum));
        dots += svg::mark(sums.last(), "dot");
    }
    return svg::chart({0, 0, width, 272}, "Failed units by control, most failures first",
                      elements + svg::line(sums, "trend") + dots);
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
    return svg::chart({0, 0, chartWidth, 118},
                      "Missed bands of " + controlnames::control(control.componentNum), elements);
}

QString chart::surface(const Report& report)
{
    constexpr double margin = 16;
    QRectF ground;
    QString marks;
    for (const ControlFailures& control : report.controls) {
        const QRectF area = panelArea(control.componentNum);
        ground = ground.united(area);
        if (!area.isEmpty())
            marks += controlMark(control, area);
    }
    ground.adjust(-margin, -margin, margin, margin);
    return svg::chart(ground,
                      "The control surface, each control coloured by its share of failed units",
                      svg::rect(ground, "ground") + marks);
}
