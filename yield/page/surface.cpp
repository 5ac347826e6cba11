// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "unit/panelplacement.h"
#include "yield/logs/controlnames.h"
#include "yield/page/chart.h"
#include "yield/page/figuretext.h"
#include "yield/page/svg.h"

#include <QRectF>

#include <array>

namespace
{
/// Where a colour ends, in percent of the units; the last colour is for all above. The same on
/// every page, so that pages can be compared.
constexpr std::array<int, 5> lastPercentOfColour{0, 1, 2, 5, 10};

QString colour(int missed, int units)
{
    std::size_t step = 0;
    while (step < lastPercentOfColour.size() &&
           qint64{100} * missed > qint64{lastPercentOfColour.at(step)} * units)
        ++step;
    return QString("miss%1").arg(step);
}

QRectF place(int componentNum)
{
    const auto topLeft = panelPlace(componentNum);
    return topLeft ? QRectF(*topLeft, panelSize(roster::kindOf(componentNum))) : QRectF();
}

QString hoverText(int componentNum, const ControlMisses& control)
{
    const QString name =
        QString("%1 (component %2): ")
            .arg(controlnames::control(componentNum), QString::number(componentNum));
    if (control.units == 0)
        return name + "not tested";
    return name + "missed at the first attempt by " +
           figuretext::share(control.missed, control.units);
}

void drawControl(Svg& svg, int componentNum, const ControlMisses& control, const QRectF& area)
{
    const bool isTested = control.units > 0;
    const QString classes = isTested ? colour(control.missed, control.units) : "untested";
    const QString number = QString::number(componentNum);
    const QString rate = isTested ? figuretext::percent(control.missed, control.units) : QString();
    svg.rect(area.adjusted(1, 1, -1, -1), "control " + classes, hoverText(componentNum, control));
    const QString strong = "number on-" + classes + " middle";
    const QString plain = "rate on-" + classes + " middle";
    switch (roster::kindOf(componentNum)) {
    case roster::Kind::Fader:
        svg.text({area.center().x(), area.top() + 24}, number, strong);
        svg.text({area.center().x(), area.top() + 44}, rate, plain);
        break;
    case roster::Kind::Button:
        svg.text({area.center().x(), area.top() + 14}, number, strong);
        svg.text({area.center().x(), area.top() + 26}, rate, plain);
        break;
    case roster::Kind::Rotary:
        svg.text({area.left() + 38, area.center().y() + 5}, number, strong);
        svg.text({area.right() - 32, area.center().y() + 4}, rate, plain);
        break;
    }
}

void drawLegend(Svg& svg, QPointF corner)
{
    svg.text(corner + QPointF(0, 13), "Units that missed a band at first:", "label");
    double x = corner.x() + 215;
    for (std::size_t step = 0; step <= lastPercentOfColour.size(); ++step) {
        const bool isLast = step == lastPercentOfColour.size();
        const int percent = lastPercentOfColour.at(isLast ? step - 1 : step);
        const QString text = step == 0 ? "none"
                             : isLast  ? "more"
                                       : QString("up to %1 %").arg(percent);
        svg.rect({x, corner.y(), 22, 16}, QString("control miss%1").arg(step));
        svg.text({x + 28, corner.y() + 13}, text, "label");
        x += 110;
    }
}
} // namespace

void chart::drawSurface(Html& html, const Report& report)
{
    constexpr double margin = 16;
    constexpr double legendHeight = 36;
    QRectF all;
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c)
        all = all.united(place(c));
    const QRectF ground = all.adjusted(-margin, -margin, margin, margin);

    Svg svg(html, ground.size() + QSizeF(0, legendHeight),
            "The control surface, each control coloured by how often it missed a "
            "band at the first attempt");
    svg.rect({QPointF(), ground.size()}, "ground");
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c)
        if (!place(c).isEmpty())
            drawControl(svg, c, report.controls.at(static_cast<std::size_t>(c)),
                        place(c).translated(-ground.topLeft()));
    drawLegend(svg, {margin, ground.height() + 14});
}
