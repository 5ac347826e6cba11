// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/svg.h"

#include "yield/page/html.h"

namespace
{
QString place(const char* names, QPointF point)
{
    return QString(names).arg(point.x()).arg(point.y());
}

QString places(const QVector<QPointF>& points)
{
    QString list;
    for (const QPointF& point : points)
        list += place("%1,%2 ", point);
    return QString("points='%1'").arg(list.trimmed());
}

QString title(const QString& hover)
{
    return hover.isEmpty() ? QString() : html::element("title", html::text(hover));
}
} // namespace

Svg::Svg(QSizeF size, const QString& label)
    : begin(QString("\n<svg viewBox='0 0 %1 %2' role='img' aria-label=\"%3\">")
                .arg(size.width())
                .arg(size.height())
                .arg(html::text(label)))
{
}

void Svg::rect(const QRectF& area, const QString& classes, const QString& hover)
{
    const QString size = place(" width='%1' height='%2'", {area.width(), area.height()});
    add("rect", place("x='%1' y='%2'", area.topLeft()) + size, classes, title(hover));
}

void Svg::circle(QPointF centre, const QString& classes, const QString& hover)
{
    add("circle", place("cx='%1' cy='%2' r='4.5'", centre), classes, title(hover));
}

void Svg::triangle(QPointF centre, bool isUp, const QString& classes, const QString& hover)
{
    constexpr double radius = 8;
    const double tip = isUp ? -radius : radius;
    const QVector<QPointF> corners{centre + QPointF(0, tip), centre + QPointF(radius, -tip * 0.75),
                                   centre + QPointF(-radius, -tip * 0.75)};
    add("polygon", places(corners), classes, title(hover));
}

void Svg::line(QPointF from, QPointF to, const QString& classes)
{
    add("line", place("x1='%1' y1='%2'", from) + place(" x2='%1' y2='%2'", to), classes);
}

void Svg::polyline(const QVector<QPointF>& points, const QString& classes)
{
    add("polyline", places(points), classes);
}

void Svg::text(QPointF baseline, const QString& content, const QString& classes)
{
    add("text", place("x='%1' y='%2'", baseline), classes, html::text(content));
}

void Svg::add(const QString& element, const QString& geometry, const QString& classes,
              const QString& content)
{
    const QString tag = "\n<" + element + ' ' + geometry + " class='" + classes + "'>";
    elements += tag + content + "</" + element + '>';
}

QString Svg::markup() const
{
    return begin + elements + "</svg>";
}
