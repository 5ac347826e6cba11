// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/svg.h"

#include <QStringList>
#include <QXmlStreamWriter>

namespace
{
QString asText(double value)
{
    return QString::number(qRound(value * 100) / 100.0);
}
} // namespace

Svg::Svg(QXmlStreamWriter& writer, QSizeF size, const QString& label)
    : xml(writer)
{
    xml.writeStartElement(QStringLiteral("svg"));
    xml.writeAttribute(
        QStringLiteral("viewBox"),
        QStringLiteral("0 0 %1 %2").arg(asText(size.width()), asText(size.height())));
    xml.writeAttribute(QStringLiteral("role"), QStringLiteral("img"));
    xml.writeAttribute(QStringLiteral("aria-label"), label);
}

Svg::~Svg()
{
    xml.writeEndElement();
}

void Svg::rect(const QRectF& area, const QString& classes, const QString& hover)
{
    begin(QStringLiteral("rect"), classes);
    number(QStringLiteral("x"), area.x());
    number(QStringLiteral("y"), area.y());
    number(QStringLiteral("width"), area.width());
    number(QStringLiteral("height"), area.height());
    end(hover);
}

void Svg::circle(QPointF centre, double radius, const QString& classes, const QString& hover)
{
    begin(QStringLiteral("circle"), classes);
    number(QStringLiteral("cx"), centre.x());
    number(QStringLiteral("cy"), centre.y());
    number(QStringLiteral("r"), radius);
    end(hover);
}

void Svg::line(QPointF from, QPointF to, const QString& classes)
{
    begin(QStringLiteral("line"), classes);
    number(QStringLiteral("x1"), from.x());
    number(QStringLiteral("y1"), from.y());
    number(QStringLiteral("x2"), to.x());
    number(QStringLiteral("y2"), to.y());
    end();
}

void Svg::polyline(const QVector<QPointF>& points, const QString& classes)
{
    QStringList pairs;
    for (const QPointF& point : points)
        pairs << asText(point.x()) + QLatin1Char(',') + asText(point.y());
    begin(QStringLiteral("polyline"), classes);
    xml.writeAttribute(QStringLiteral("points"), pairs.join(QLatin1Char(' ')));
    end();
}

void Svg::text(QPointF baseline, const QString& text, const QString& classes)
{
    begin(QStringLiteral("text"), classes);
    number(QStringLiteral("x"), baseline.x());
    number(QStringLiteral("y"), baseline.y());
    xml.writeCharacters(text);
    end();
}

void Svg::begin(const QString& element, const QString& classes)
{
    xml.writeStartElement(element);
    xml.writeAttribute(QStringLiteral("class"), classes);
}

void Svg::number(const QString& attribute, double value)
{
    xml.writeAttribute(attribute, asText(value));
}

void Svg::end(const QString& hover)
{
    if (!hover.isEmpty())
        xml.writeTextElement(QStringLiteral("title"), hover);
    xml.writeEndElement();
}
