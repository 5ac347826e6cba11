// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QPointF>
#include <QRectF>
#include <QString>
#include <QVector>

/// Parts of an HTML page as markup.
namespace html
{
/// A text as it may stand in an element or an attribute: escaped, and characters that a page cannot
/// hold are shown as the replacement character.
QString text(const QString& characters);

/// content and attributes are markup.
QString element(const QString& name, const QString& content, const QString& classes = {},
                const QString& attributes = {});

struct Cell {
    QString text;
    QString cssClass = {};
};
using Cells = QVector<Cell>;

QString row(const Cells& cells);

/// A row for each item; cellsOf gives its cells, and gets the arguments too.
template <typename Items, typename CellsOf, typename... Arguments>
QString rows(const Items& items, CellsOf cellsOf, const Arguments&... arguments)
{
    QString markup;
    for (const auto& item : items)
        markup += row(cellsOf(item, arguments...));
    return markup;
}
} // namespace html

/// A picture inside a page and its elements, as markup. Colours and fonts come from the page's
/// style sheet by class names, so that they follow light and dark. Lengths are in pixels of the
/// picture, y runs down.
namespace svg
{
/// label: what the picture shows, for those who cannot see it.
QString picture(QSizeF size, const QString& label, const QString& elements);

/// Elements with a text that is shown while the mouse is over them.
QString titled(const QString& hover, const QString& elements);

QString rect(const QRectF& area, const QString& classes);
QString circle(QPointF centre, const QString& classes);
/// A triangle around the centre, its tip up or down.
QString triangle(QPointF centre, bool isUp, const QString& classes);
QString line(const QVector<QPointF>& points, const QString& classes);
QString text(QPointF baseline, const QString& content, const QString& classes);
} // namespace svg
