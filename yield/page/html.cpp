// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/html.h"

#include "yield/logs/printabletext.h"

#include <QIODevice>

namespace
{
/// Without the characters that a page cannot hold: the writer would give up at them.
QString holdable(const QString& text)
{
    // By way of UTF-8, which has no half surrogate pairs.
    QString shown = QString::fromUtf8(printableText(text).toUtf8());
    for (QChar& c : shown)
        if (c.unicode() > QChar::ReplacementCharacter)
            c = QChar::ReplacementCharacter;
    return shown;
}
} // namespace

Html::Scope::Scope(Html& html, int elements)
    : page(html)
    , open(elements)
{
}

Html::Scope::~Scope()
{
    for (; open > 0; --open)
        page.xml.writeEndElement();
}

Html::Html(QIODevice& output, const QString& title, const QString& style)
    : xml(&output)
{
    xml.writeDTD("<!DOCTYPE html>\n");
    xml.writeStartElement("html");
    attribute("lang", "en");
    {
        const Scope head = open("head");
        xml.writeEmptyElement("meta");
        attribute("charset", "utf-8");
        xml.writeEmptyElement("meta");
        attribute("name", "viewport");
        attribute("content", "width=device-width");
        element("title", title);
        begin("style");
        xml.writeCharacters(style);
        xml.writeEndElement();
    }
    begin("body");
}

Html::Scope Html::open(const QString& element, const QString& cssClass)
{
    begin(element, cssClass);
    return {*this, 1};
}

void Html::element(const QString& name, const QString& content, const QString& cssClass)
{
    const Scope scope = open(name, cssClass);
    text(content);
}

Html::Scope Html::section(const QString& id, const QString& heading, const QString& explanation)
{
    begin("section");
    attribute("id", id);
    element("h2", heading);
    if (!explanation.isEmpty())
        element("p", explanation, "quiet");
    return {*this, 1};
}

Html::Scope Html::table(const QVector<Column>& columns)
{
    begin("table");
    {
        const Scope head = open("thead");
        const Scope headRow = row();
        for (const Column& column : columns)
            element("th", column.heading,
                    column.kind == Column::Kind::Number ? "number" : QString());
    }
    begin("tbody");
    return {*this, 2};
}

Html::Scope Html::row()
{
    return open("tr");
}

void Html::cell(const QString& content, const QString& cssClass)
{
    element("td", content, cssClass);
}

void Html::number(const QString& content)
{
    cell(content, "number");
}

void Html::attribute(const QString& name, const QString& value)
{
    xml.writeAttribute(name, holdable(value));
}

void Html::text(const QString& characters)
{
    xml.writeCharacters(holdable(characters));
}

bool Html::finish()
{
    xml.writeEndElement();
    xml.writeEndElement();
    xml.writeCharacters("\n");
    return !xml.hasError();
}

void Html::begin(const QString& element, const QString& cssClass)
{
    // A line for each, so that tools that show differences have something to hold on to.
    xml.writeCharacters("\n");
    xml.writeStartElement(element);
    if (!cssClass.isEmpty())
        attribute("class", cssClass);
}
