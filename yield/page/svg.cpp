// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/svg.h"

#include <QStringList>

namespace
{
QString asText(double value)
{
    return QString::number(qRound(value * 100) / 100.0);
}
} // namespace

Svg::Svg(Html& page, QSizeF size, const QString& label)
    : html(page)
    , picture(page.open("svg"))
{
    html.attribute("viewBox",
                   QString("0 0 %1 %2").arg(asText(size.width()), asText(size.height())));
    html.attribute("role", "img");
    html.attribute("aria-label", label);
}

void Svg::rect(const QRectF& area, const QString& classes, const QString& hover)
{
    const Html::Scope element = html.open("rect", classes);
    attribute("x", area.x());
    attribute("y", area.y());
    attribute("width", area.width());
    attribute("height", area.height());
    writeHover(hover);
}

void Svg::circle(QPointF centre, double radius, const QString& classes, const QString& hover)
{
    const Html::Scope element = html.open("circle", classes);
    attribute("cx", centre.x());
    attribute("cy", centre.y());
    attribute("r", radius);
    writeHover(hover);
}

void Svg::line(QPointF from, QPointF to, const QString& classes)
{
    const Html::Scope element = html.open("line", classes);
    attribute("x1", from.x());
    attribute("y1", from.y());
    attribute("x2", to.x());
    attribute("y2", to.y());
}

void Svg::triangle(QPointF centre, bool isUp, const QString& classes, const QString& hover)
{
    constexpr double radius = 8;
    const double tip = isUp ? -radius : radius;
    const Html::Scope element = html.open("polygon", classes);
    attribute("points", {centre + QPointF(0, tip), centre + QPointF(radius, -tip * 0.75),
                         centre + QPointF(-radius, -tip * 0.75)});
    writeHover(hover);
}

void Svg::polyline(const QVector<QPointF>& points, const QString& classes)
{
    const Html::Scope element = html.open("polyline", classes);
    attribute("points", points);
}

void Svg::text(QPointF baseline, const QString& content, const QString& classes)
{
    const Html::Scope element = html.open("text", classes);
    attribute("x", baseline.x());
    attribute("y", baseline.y());
    html.text(content);
}

void Svg::attribute(const QString& name, double value)
{
    html.attribute(name, asText(value));
}

void Svg::attribute(const QString& name, const QVector<QPointF>& points)
{
    QStringList pairs;
    for (const QPointF& point : points)
        pairs << asText(point.x()) + ',' + asText(point.y());
    html.attribute(name, pairs.join(' '));
}

void Svg::writeHover(const QString& hover)
{
    if (!hover.isEmpty())
        html.element("title", hover);
}
