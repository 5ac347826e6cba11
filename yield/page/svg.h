// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/page/html.h"

#include <QPointF>
#include <QRectF>
#include <QSizeF>

/// One picture inside a page, as SVG elements. Colours and fonts come from the page's style sheet
/// by class names, so that they follow light and dark. Lengths are in pixels of the picture, y runs
/// down. The picture is closed with the object.
class Svg
{
public:
    /// label: what the picture shows, for those who cannot see it.
    Svg(Html& page, QSizeF size, const QString& label);

    /// hover: shown while the mouse is over the element; may be empty.
    void rect(const QRectF& area, const QString& classes, const QString& hover = {});
    void circle(QPointF centre, double radius, const QString& classes, const QString& hover = {});
    void line(QPointF from, QPointF to, const QString& classes);
    /// A triangle around the centre, its tip up or down.
    void triangle(QPointF centre, bool isUp, const QString& classes, const QString& hover = {});
    void polyline(const QVector<QPointF>& points, const QString& classes);
    void text(QPointF baseline, const QString& content, const QString& classes);

private:
    void attribute(const QString& name, double value);
    void attribute(const QString& name, const QVector<QPointF>& points);
    void writeHover(const QString& hover);

    Html& html;
    Html::Scope picture;
};
