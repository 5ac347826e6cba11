// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

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

/// A cell of a table holds a text, and a picture as markup.
struct Cell {
    QString text;
    QString cssClass = {};
    QString picture = {};
};
using Cells = QVector<Cell>;

QString row(const Cells& cells);

/// A row for each item; cellsOf gives the cells of one.
template <typename Items, typename CellsOf>
QString rows(const Items& items, CellsOf cellsOf)
{
    QString markup;
    for (const auto& item : items)
        markup += row(cellsOf(item));
    return markup;
}
} // namespace html
