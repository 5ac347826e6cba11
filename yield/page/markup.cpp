// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/markup.h"

#include "yield/logs/printabletext.h"
#include "yield/page/definitions.h"

namespace
{
QString position(const char* attributes, QPointF point)
{
    return QString(attributes).arg(point.x()).arg(point.y());
}

QString pointList(const QVector<QPointF>& points)
{
    QString list;
    for (const QPointF& point : points)
        list += position("%1,%2 ", point);
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
    // A line for each element, so that a diff of two pages is readable.
    const QString classAttribute = classes.isEmpty() ? "" : attribute("class", classes);
    return "\n<" + name + classAttribute + attributes + '>' + content + "</" + name + '>';
}

QString html::attribute(const QString& name, const QString& value)
{
    return ' ' + name + "=\"" + text(value) + '"';
}

QString html::definition(const QString& term)
{
    const QString meaning = meaningOf(term);
    return meaning.isEmpty() ? "" : attribute("title", meaning);
}

QString html::paragraph(const QString& characters, const QString& classes)
{
    return characters.isEmpty() ? "" : element("p", text(characters), classes);
}

QString html::scrollArea(const QString& label, const QString& content, const QString& classes)
{
    if (content.isEmpty())
        return {};
    return element("div", content, classes,
                   attribute("role", "group") + attribute("aria-label", label) +
                       attribute("tabindex", "0"));
}

QString html::table(const Table& table, const QString& classes)
{
    if (table.rows.isEmpty())
        return {};
    QString head;
    for (int i = 0; i < table.columns.size(); ++i) {
        const QString& heading = table.columns.at(i).heading;
        const bool isNumber = table.rows.first().at(i).classes == "number";
        head += element("th", text(heading), isNumber ? "number" : "",
                        attribute("scope", "col") + definition(heading));
    }
    QString body;
    for (const Row& row : table.rows) {
        QString content;
        for (const Cell& cell : row)
            content += element("td", text(cell.fullText()), cell.classes);
        body += element("tr", content);
    }
    const QString content = element("thead", element("tr", head)) + element("tbody", body);
    return scrollArea(table.label, element("table", content), classes);
}

QString html::data(const Table& table)
{
    if (table.rows.isEmpty())
        return {};
    return element("details", element("summary", "Data") + html::table(table));
}

QString svg::chart(QSizeF size, const QString& label, const QString& elements)
{
    const QString box = position(" viewBox='0 0 %1 %2'", {size.width(), size.height()});
    return html::element("svg", elements, {},
                         box + html::attribute("role", "img") +
                             html::attribute("aria-label", label));
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

QString svg::circle(QPointF centre, const QString& classes)
{
    return html::element("circle", {}, classes, position(" cx='%1' cy='%2' r='4.5'", centre));
}

QString svg::triangle(QPointF centre, Tip tip, const QString& classes)
{
    const double height = tip == Tip::Up ? -8 : 8;
    const double base = -height * 0.75;
    return html::element("polygon", {}, classes,
                         pointList({centre + QPointF(0, height), centre + QPointF(8, base),
                                    centre + QPointF(-8, base)}));
}

QString svg::line(const QVector<QPointF>& points, const QString& classes)
{
    return html::element("polyline", {}, classes, pointList(points));
}

QString svg::text(QPointF baseline, const QString& content, const QString& classes)
{
    return html::element("text", html::text(content), classes,
                         position(" x='%1' y='%2'", baseline));
}
