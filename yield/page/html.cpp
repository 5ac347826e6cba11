// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/html.h"

#include "yield/logs/printabletext.h"

QString html::text(const QString& characters)
{
    // By way of UTF-8, which has no half surrogate pairs.
    QString shown = QString::fromUtf8(printableText(characters).toUtf8());
    for (QChar& c : shown)
        if (c.unicode() > QChar::ReplacementCharacter)
            c = QChar::ReplacementCharacter;
    return shown.toHtmlEscaped();
}

QString html::element(const QString& name, const QString& content, const QString& classes,
                      const QString& attributes)
{
    // A line for each, so that tools that show differences have something to hold on to.
    const QString classAttribute = classes.isEmpty() ? "" : " class=\"" + classes + '"';
    return "\n<" + name + classAttribute + attributes + '>' + content + "</" + name + '>';
}

QString html::row(const Cells& cells)
{
    QString content;
    for (const Cell& cell : cells)
        content += element("td", text(cell.text) + cell.picture, cell.cssClass);
    return element("tr", content);
}
