// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/markup.h"

#include "yield/logs/printabletext.h"

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
} // namespace

QString html::text(const QString& characters)
{
    // By way of UTF-8, which has no half surrogate pairs.
    QString shown = QString::fromUtf8(printableText(characters).toUtf8());
    for (QChar& c : shown)
        if (c.unicode() > QChar::ReplacementCharacter)
            c = QChar::ReplacementCharacter;
    return shown.toHtmlEscaped();
}

QString html::element(const QString& name, const QString& content, const QString& classes,
                      const QString& attributes)
{
    // A line for each, so that tools that show differences have something to hold on to.
    const QString classAttribute = classes.isEmpty() ? "" : " class=\"" + classes + '"';
    return "\n<" + name + classAttribute + attributes + '>' + content + "</" + name + '>';
}

QString html::row(const Cells& cells)
{
    QString content;
    for (const Cell& cell : cells)
        content += element("td", text(cell.text), cell.cssClass);
    return element("tr", content);
}

QString svg::picture(QSizeF size, const QString& label, const QString& elements)
{
    const QString box = place(" viewBox='0 0 %1 %2'", {size.width(), size.height()});
    const QString role = " role='img' aria-label=\"" + html::text(label) + '"';
    return html::element("svg", elements, {}, box + role);
}

QString svg::titled(const QString& hover, const QString& elements)
{
    return html::element("g", html::element("title", html::text(hover)) + elements);
}

QString svg::rect(const QRectF& area, const QString& classes)
{
    const QString size = place(" width='%1' height='%2'", {area.width(), area.height()});
    return html::element("rect", {}, classes, place(" x='%1' y='%2'", area.topLeft()) + size);
}

QString svg::circle(QPointF centre, const QString& classes)
{
    return html::element("circle", {}, classes, place(" cx='%1' cy='%2' r='4.5'", centre));
}

QString svg::triangle(QPointF centre, bool isUp, const QString& classes)
{
    const double tip = isUp ? -8 : 8;
    const QVector<QPointF> corners{centre + QPointF(0, tip), centre + QPointF(8, -tip * 0.75),
                                   centre + QPointF(-8, -tip * 0.75)};
    return html::element("polygon", {}, classes, places(corners));
}

QString svg::line(const QVector<QPointF>& points, const QString& classes)
{
    return html::element("polyline", {}, classes, places(points));
}

QString svg::text(QPointF baseline, const QString& content, const QString& classes)
{
    return html::element("text", html::text(content), classes, place(" x='%1' y='%2'", baseline));
}
