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

Html::Scope::Scope(QXmlStreamWriter& writer)
    : xml(writer)
{
}

Html::Scope::~Scope()
{
    xml.writeEndElement();
}

Html::Row::Row(Html& html)
    : page(html)
    , scope(html.open("tr"))
{
}

Html::Row& Html::Row::cell(const QString& content, const QString& cssClass)
{
    page.element("td", content, cssClass);
    return *this;
}

Html::Row& Html::Row::number(const QString& content)
{
    return cell(content, "number");
}

Html::Html(QIODevice& output)
    : xml(&output)
{
}

Html::Scope Html::open(const QString& element, const QString& cssClass)
{
    // A line for each, so that tools that show differences have something to hold on to.
    xml.writeCharacters("\n");
    xml.writeStartElement(element);
    if (!cssClass.isEmpty())
        attribute("class", cssClass);
    return Scope(xml);
}

void Html::element(const QString& name, const QString& content, const QString& cssClass)
{
    const Scope scope = open(name, cssClass);
    text(content);
}

Html::Row Html::row()
{
    return Row(*this);
}

void Html::attribute(const QString& name, const QString& value)
{
    xml.writeAttribute(name, holdable(value));
}

void Html::text(const QString& characters)
{
    xml.writeCharacters(holdable(characters));
}

void Html::markup(const QString& html)
{
    const QByteArray bytes = html.toUtf8();
    tookMarkup = xml.device()->write(bytes) == bytes.size() && tookMarkup;
}

bool Html::isWhole() const
{
    return tookMarkup && !xml.hasError();
}
