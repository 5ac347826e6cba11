// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QStringList>
#include <QXmlStreamWriter>

class QIODevice;

/// Writes an HTML page element by element; every text is escaped. Elements may have a class.
class Html
{
public:
    /// style: CSS without the characters that are escaped.
    Html(QIODevice& output, const QString& title, const QString& style);

    void begin(const QString& element, const QString& cssClass = {});
    void end();
    void element(const QString& name, const QString& text, const QString& cssClass = {});

    /// A section with a heading and, below it, a line that explains it; to be ended with end().
    void beginSection(const QString& id, const QString& heading, const QString& explanation = {});

    /// A table and its head; a heading that begins with # is one of numbers.
    void beginTable(const QStringList& headings);
    void endTable();

    /// Ends the page. False if the output did not take all of it.
    bool finish();

    /// For pictures in the page.
    QXmlStreamWriter xml;
};
