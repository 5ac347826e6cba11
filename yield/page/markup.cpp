// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/markup.h"

#include "yield/logs/messages.h"

#include <QRegularExpression>

namespace
{
QString position(const char* attributes, QPointF point)
{
    return QString(attributes).arg(point.x()).arg(point.y());
}
} // namespace

QString html::text(const QString& characters)
{
    // By way of UTF-8, which has no half surrogate pairs.
    QString shown = QString::fromUtf8(printableText(characters).toUtf8());
    static const QRegularExpression notInHtml("[\uFFFE\uFFFF]");
    return shown.replace(notInHtml, "\uFFFD").toHtmlEscaped();
}

QString html::element(const QString& name, const QString& content, const QString& classes,
                      const QString& attributes)
{
    // A line for each element, so that a diff of two pages is readable.
    const QString classAttribute = classes.isEmpty() ? "" : " class='" + classes + '\'';
    return "\n<" + name + classAttribute + attributes + '>' + content + "</" + name + '>';
}

QString html::paragraph(const QString& characters)
{
    return element("p", text(characters), "quiet");
}

QString svg::chart(const QRectF& area, const QString& label, const QString& elements)
{
    const QString box = position(" viewBox='%1 %2 ", area.topLeft()) +
                        position("%1 %2'", {area.width(), area.height()});
    return html::element("svg", elements, {},
                         box + " role='img' aria-label='" + html::text(label) + '\'');
}

QString svg::titled(const QString& hover, const QString& elements)
{
    return html::element("g", html::element("title", html::text(hover)) + elements);
}

QString svg::rect(const QRectF& area, const QString& classes)
{
    const QString size = position(" width='%1' height='%2'", {area.width(), area.height()});
    return html::element("rect", {}, classes, position(" x='%1' y='%2'", area.topLeft()) + size);
}

QString svg::mark(QPointF centre, const QString& name)
{
    const QString place = position(" x='%1' y='%2'", centre);
    return html::element("use", {}, name, place + " href='#" + name + '\'');
}

QString svg::line(const QVector<QPointF>& points, const QString& classes)
{
    QString list;
    for (const QPointF& point : points)
        list += position("%1,%2 ", point);
    return html::element("polyline", {}, classes, " points='" + list.trimmed() + '\'');
}

QString svg::text(QPointF baseline, const QString& content, const QString& classes)
{
    return html::element("text", html::text(content), classes,
                         position(" x='%1' y='%2'", baseline));
}
