// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "unit/panelplacement.h"
#include "yield/logs/controlnames.h"
#include "yield/page/chart.h"
#include "yield/page/figuretext.h"
#include "yield/page/svg.h"

namespace
{
/// Up to how many percent of the units a colour is for; the legend in page.html says so too. The
/// same on every page, so that pages can be compared.
constexpr int lastPercentOfColour[] = {0, 1, 2, 5, 10, 100};

QString colourClass(int missed, int units)
{
    int step = 0;
    while (100.0 * missed > 1.0 * lastPercentOfColour[step] * units)
        ++step;
    return QString("miss%1").arg(step);
}

QRectF place(int componentNum)
{
    const auto topLeft = panelPlace(componentNum);
    return topLeft ? QRectF(*topLeft, panelSize(roster::kindOf(componentNum))) : QRectF();
}

QString controlPicture(int componentNum, const ControlMisses& control, const QRectF& area)
{
    const bool isTested = control.units > 0;
    const QString colour = isTested ? colourClass(control.missed, control.units) : "untested";
    const QString rate = isTested ? figuretext::percent(control.missed, control.units) : QString();
    const QString missed =
        "missed at the first attempt by " + figuretext::share(control.missed, control.units);
    const QString number = QString::number(componentNum);
    const QString hover =
        QString("%1 (component %2): %3")
            .arg(controlnames::control(componentNum), number, isTested ? missed : "not tested");

    const roster::Kind kind = roster::kindOf(componentNum);
    const bool isFader = kind == roster::Kind::Fader;
    QPointF numberAt(area.center().x(), area.top() + (isFader ? 24 : 14));
    QPointF rateAt = numberAt + QPointF(0, isFader ? 20 : 12);
    if (kind == roster::Kind::Rotary) {
        numberAt = {area.left() + 38, area.center().y() + 5};
        rateAt = {area.right() - 32, area.center().y() + 4};
    }
    return svg::rect(area.adjusted(1, 1, -1, -1), "control " + colour, hover) +
           svg::text(numberAt, number, "number on-" + colour + " middle") +
           svg::text(rateAt, rate, "rate on-" + colour + " middle");
}

} // namespace

QString chart::surface(const Report& report)
{
    constexpr double margin = 16;
    QRectF all;
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c)
        all = all.united(place(c));
    const QRectF ground = all.adjusted(-margin, -margin, margin, margin);

    QString picture = svg::rect({QPointF(), ground.size()}, "ground");
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c)
        if (!place(c).isEmpty())
            picture += controlPicture(c, report.controls.at(static_cast<std::size_t>(c)),
                                      place(c).translated(-ground.topLeft()));
    return svg::picture(ground.size(),
                        "The control surface, each control coloured by how often it missed a "
                        "band at the first attempt",
                        picture);
}
