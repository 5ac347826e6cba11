// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QPointF>
#include <QRectF>
#include <QString>
#include <QVector>

/// A picture inside a page, as SVG. Colours and fonts come from the page's style sheet by class
/// names, so that they follow light and dark. Lengths are in pixels of the picture, y runs down.
class Svg
{
public:
    /// label: what the picture shows, for those who cannot see it.
    Svg(QSizeF size, const QString& label);

    /// hover: shown while the mouse is over the element; may be empty.
    void rect(const QRectF& area, const QString& classes, const QString& hover = {});
    void circle(QPointF centre, const QString& classes, const QString& hover = {});
    /// A triangle around the centre, its tip up or down.
    void triangle(QPointF centre, bool isUp, const QString& classes, const QString& hover = {});
    void line(QPointF from, QPointF to, const QString& classes);
    void polyline(const QVector<QPointF>& points, const QString& classes);
    void text(QPointF baseline, const QString& content, const QString& classes);

    /// The picture with all that was drawn.
    QString markup() const;

private:
    /// geometry: attributes; content: markup.
    void add(const QString& element, const QString& geometry, const QString& classes,
             const QString& content = {});

    QString begin;
    QString elements;
};
