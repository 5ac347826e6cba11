// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

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

QString paragraph(const QString& characters);
} // namespace html

/// A chart inside a page and its elements, as markup. Colours and fonts come from the page's style
/// sheet by class names, so that they follow light and dark. Lengths are in pixels of the chart, y
/// runs down.
namespace svg
{
/// label: for screen readers.
QString chart(const QRectF& area, const QString& label, const QString& elements);

/// Elements with a text that is shown while the mouse is over them.
QString titled(const QString& hover, const QString& elements);
QString rect(const QRectF& area, const QString& classes);

/// One of the marks of page.html: "dot", "below" or "above".
QString mark(QPointF centre, const QString& name);
QString line(const QVector<QPointF>& points, const QString& classes);
QString text(QPointF baseline, const QString& content, const QString& classes);
} // namespace svg
