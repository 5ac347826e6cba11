// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/svg.h"

#include "yield/page/html.h"

using html::element;

namespace
{
QString place(const char* attributes, QPointF point)
{
    return QString(attributes).arg(point.x()).arg(point.y());
}

QString places(const QVector<QPointF>& points)
{
    QString list;
    for (const QPointF& point : points)
        list += place("%1,%2 ", point);
    return " points='" + list.trimmed() + '\'';
}

QString title(const QString& hover)
{
    return hover.isEmpty() ? QString() : element("title", html::text(hover));
}
} // namespace

QString svg::picture(QSizeF size, const QString& label, const QString& elements)
{
    const QString box = place(" viewBox='0 0 %1 %2'", {size.width(), size.height()});
    const QString role = " role='img' aria-label=\"" + html::text(label) + '"';
    return element("svg", elements, {}, box + role);
}

QString svg::rect(const QRectF& area, const QString& classes, const QString& hover)
{
    const QString size = place(" width='%1' height='%2'", {area.width(), area.height()});
    return element("rect", title(hover), classes, place(" x='%1' y='%2'", area.topLeft()) + size);
}

QString svg::circle(QPointF centre, const QString& classes, const QString& hover)
{
    return element("circle", title(hover), classes, place(" cx='%1' cy='%2' r='4.5'", centre));
}

QString svg::triangle(QPointF centre, bool isUp, const QString& classes, const QString& hover)
{
    const double tip = isUp ? -8 : 8;
    const QVector<QPointF> corners{centre + QPointF(0, tip), centre + QPointF(8, -tip * 0.75),
                                   centre + QPointF(-8, -tip * 0.75)};
    return element("polygon", title(hover), classes, places(corners));
}

QString svg::line(const QVector<QPointF>& points, const QString& classes)
{
    return element("polyline", {}, classes, places(points));
}

QString svg::text(QPointF baseline, const QString& content, const QString& classes)
{
    return element("text", html::text(content), classes, place(" x='%1' y='%2'", baseline));
}
