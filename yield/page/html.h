// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QVector>
#include <QXmlStreamWriter>

class QIODevice;

/// Writes an HTML page element by element. Every text is escaped; characters that a page cannot
/// hold are shown as the replacement character.
class Html
{
public:
    /// One open element, or some that stand in each other. They are closed with the object.
    class Scope
    {
    public:
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        friend Html;
        Scope(Html& html, int elements);

        Html& page;
        int open;
    };

    struct Column {
        enum class Kind { Text, Number };

        QString heading;
        Kind kind = Kind::Text;
    };

    /// style: CSS that holds none of the characters <, >, & and ".
    Html(QIODevice& output, const QString& title, const QString& style);

    [[nodiscard]] Scope open(const QString& element, const QString& cssClass = {});
    void element(const QString& name, const QString& content, const QString& cssClass = {});

    /// A section with a heading and, if there is one, a line that explains it.
    [[nodiscard]] Scope section(const QString& id, const QString& heading,
                                const QString& explanation = {});

    /// A table with its head, to be filled with rows.
    [[nodiscard]] Scope table(const QVector<Column>& columns);
    [[nodiscard]] Scope row();
    void cell(const QString& content, const QString& cssClass = {});
    /// A cell of a column of numbers.
    void number(const QString& content);

    /// The parts of the element that was opened last: first its attributes, then its text.
    void attribute(const QString& name, const QString& value);
    void text(const QString& characters);

    /// Ends the page. False if the output did not take all of it.
    bool finish();

private:
    void begin(const QString& element, const QString& cssClass = {});

    QXmlStreamWriter xml;
};
