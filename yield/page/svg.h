// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QPointF>
#include <QRectF>
#include <QString>
#include <QVector>

/// A picture inside a page and its elements, as markup. Colours and fonts come from the page's
/// style sheet by class names, so that they follow light and dark. Lengths are in pixels of the
/// picture, y runs down. hover: shown while the mouse is over the element; may be empty.
namespace svg
{
/// label: what the picture shows, for those who cannot see it.
QString picture(QSizeF size, const QString& label, const QString& elements);

QString rect(const QRectF& area, const QString& classes, const QString& hover = {});
QString circle(QPointF centre, const QString& classes, const QString& hover = {});
/// A triangle around the centre, its tip up or down.
QString triangle(QPointF centre, bool isUp, const QString& classes, const QString& hover = {});
QString line(const QVector<QPointF>& points, const QString& classes);
QString text(QPointF baseline, const QString& content, const QString& classes);
} // namespace svg
