// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "unit/panelplacement.h"
#include "yield/page/cells.h"
#include "yield/page/chart.h"
#include "yield/page/markup.h"

namespace
{
constexpr double margin = 16;

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

/// Empty for the power button.
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

QString chart::surface(const QVector<ControlFailures>& controls)
{
    QRectF ground;
    QString marks;
    for (const ControlFailures& control : controls) {
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
