// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/page/tables.h"

#include <QPointF>
#include <QRectF>
#include <QString>
#include <QVector>

/// Elements of an HTML page as markup. Names, classes, attributes and content are markup; every
/// other text is escaped here.
namespace html
{
/// Text escaped for an element or an attribute; characters that a page cannot hold become U+FFFD.
QString text(const QString& characters);

QString element(const QString& name, const QString& content, const QString& classes = {},
                const QString& attributes = {});

/// " name="value"".
QString attribute(const QString& name, const QString& value);

/// The attribute that shows what a term means under the mouse; empty for other words.
QString definition(const QString& term);

/// Empty without a text.
QString paragraph(const QString& characters, const QString& classes = "quiet");

/// Content that scrolls where it is wider than the page, also with the keyboard; label: for screen
/// readers. Empty without content.
QString scrollArea(const QString& label, const QString& content, const QString& classes = "scroll");

/// A table in a scroll area. A heading that is a defined term shows its definition under the mouse.
/// Empty without rows.
QString table(const Table& table, const QString& classes = "scroll");

/// A table that opens below the chart that shows it.
QString data(const Table& table);
} // namespace html

/// A chart inside a page and its elements, as markup. Colours and fonts come from the page's style
/// sheet by class names, so that they follow light and dark. Lengths are in pixels of the chart, y
/// runs down.
namespace svg
{
/// label: for screen readers.
QString chart(QSizeF size, const QString& label, const QString& elements);

/// Elements with a text that is shown while the mouse is over them.
QString titled(const QString& hover, const QString& elements);

QString rect(const QRectF& area, const QString& classes);
QString circle(QPointF centre, const QString& classes);
/// A triangle around the centre, its tip up or down.
enum class Tip { Up, Down };
QString triangle(QPointF centre, Tip tip, const QString& classes);
QString line(const QVector<QPointF>& points, const QString& classes);
QString text(QPointF baseline, const QString& content, const QString& classes);
} // namespace svg
