// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "unit/panelplacement.h"
#include "yield/page/chart.h"
#include "yield/page/figuretext.h"
#include "yield/page/markup.h"

namespace
{
constexpr double margin = 16;

/// Up to how many percent of the units a colour is for. The same on every page, so that pages can
/// be compared.
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

QString controlPicture(const ControlMisses& control, const QRectF& area)
{
    const bool isTested = control.units > 0;
    const QString colour = isTested ? colourClass(control.missed, control.units) : "untested";
    const QString rate = isTested ? figuretext::percent(control.missed, control.units) : QString();
    const QString hover = figuretext::control(control) + ": " + figuretext::missed(control);
    const QPointF numberAt = area.center() - QPointF(0, 1);
    const QPointF rateAt = numberAt + QPointF(0, 12);
    return svg::titled(hover, svg::rect(area.adjusted(1, 1, -1, -1), "control " + colour)) +
           svg::text(numberAt, QString::number(control.componentNum),
                     "number on-" + colour + " middle") +
           svg::text(rateAt, rate, "rate on-" + colour + " middle");
}

/// What the colours mean, in one line from there on.
QString legend(QPointF place)
{
    constexpr double pitch = 110;
    QString picture;
    for (const int percent : lastPercentOfColour) {
        const QString share = percent == 0 ? "none" : QString("up to %1 %").arg(percent);
        picture += svg::rect({place, QSizeF(22, 16)}, "control " + colourClass(percent, 100)) +
                   svg::text(place + QPointF(30, 13), share, "label");
        place.rx() += pitch;
    }
    return picture;
}
} // namespace

QString chart::surface(const QVector<ControlMisses>& controls)
{
    QRectF ground;
    for (const ControlMisses& control : controls)
        ground = ground.united(place(control.componentNum));
    ground.adjust(-margin, -margin, margin, margin);
    constexpr double legendHeight = 36;

    QString picture =
        svg::rect({QPointF(), ground.size()}, "ground") + legend({margin, ground.height() + 14});
    for (const ControlMisses& control : controls)
        if (const QRectF area = place(control.componentNum); !area.isEmpty())
            picture += controlPicture(control, area.translated(-ground.topLeft()));
    return svg::picture(ground.size() + QSizeF(0, legendHeight),
                        "The control surface, each control coloured by how often it missed a "
                        "band at the first attempt",
                        picture);
}
