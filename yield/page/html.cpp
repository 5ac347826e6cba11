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

Html::Html(QIODevice& output, const QString& title, const QString& style)
    : xml(&output)
{
    xml.writeDTD(QStringLiteral("<!DOCTYPE html>\n"));
    xml.writeStartElement(QStringLiteral("html"));
    xml.writeAttribute(QStringLiteral("lang"), QStringLiteral("en"));
    xml.writeStartElement(QStringLiteral("head"));
    xml.writeEmptyElement(QStringLiteral("meta"));
    xml.writeAttribute(QStringLiteral("charset"), QStringLiteral("utf-8"));
    xml.writeEmptyElement(QStringLiteral("meta"));
    xml.writeAttribute(QStringLiteral("name"), QStringLiteral("viewport"));
    xml.writeAttribute(QStringLiteral("content"), QStringLiteral("width=device-width"));
    xml.writeTextElement(QStringLiteral("title"), title);
    xml.writeTextElement(QStringLiteral("style"), style);
    xml.writeEndElement();
    xml.writeStartElement(QStringLiteral("body"));
}

void Html::begin(const QString& element, const QString& cssClass)
{
    // A line for each, so that tools that show differences have something to hold on to.
    xml.writeCharacters(QStringLiteral("\n"));
    xml.writeStartElement(element);
    if (!cssClass.isEmpty())
        xml.writeAttribute(QStringLiteral("class"), cssClass);
}

void Html::end()
{
    xml.writeEndElement();
}

void Html::element(const QString& name, const QString& text, const QString& cssClass)
{
    begin(name, cssClass);
    xml.writeCharacters(holdable(text));
    end();
}

void Html::beginSection(const QString& id, const QString& heading, const QString& explanation)
{
    begin(QStringLiteral("section"));
    xml.writeAttribute(QStringLiteral("id"), id);
    element(QStringLiteral("h2"), heading);
    if (!explanation.isEmpty())
        element(QStringLiteral("p"), explanation, QStringLiteral("quiet"));
}

void Html::beginTable(const QStringList& headings)
{
    begin(QStringLiteral("table"));
    begin(QStringLiteral("thead"));
    begin(QStringLiteral("tr"));
    for (const QString& heading : headings) {
        const bool isNumber = heading.startsWith(QLatin1Char('#'));
        element(QStringLiteral("th"), isNumber ? heading.mid(1) : heading,
                isNumber ? QStringLiteral("number") : QString());
    }
    end();
    end();
    begin(QStringLiteral("tbody"));
}

void Html::endTable()
{
    end();
    end();
}

bool Html::finish()
{
    xml.writeEndElement();
    xml.writeEndElement();
    xml.writeCharacters(QStringLiteral("\n"));
    return !xml.hasError();
}
