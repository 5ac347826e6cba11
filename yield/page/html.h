// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QXmlStreamWriter>

class QIODevice;

/// Writes parts of an HTML page element by element. Every text is escaped; characters that a page
/// cannot hold are shown as the replacement character.
class Html
{
public:
    /// An open element; it is closed with the object.
    class Scope
    {
    public:
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        friend Html;
        explicit Scope(QXmlStreamWriter& writer);

        QXmlStreamWriter& xml;
    };

    /// A row of a table, closed with the object: html.row().cell("Station 1").number("12");
    class Row
    {
    public:
        Row& cell(const QString& content, const QString& cssClass = {});
        /// A cell of a column of numbers.
        Row& number(const QString& content);

    private:
        friend Html;
        explicit Row(Html& html);

        Html& page;
        Scope scope;
    };

    explicit Html(QIODevice& output);

    [[nodiscard]] Scope open(const QString& element, const QString& cssClass = {});
    void element(const QString& name, const QString& content, const QString& cssClass = {});
    Row row();

    /// Parts of the element that was opened last: first its attributes, then its text.
    void attribute(const QString& name, const QString& value);
    void text(const QString& characters);

    /// HTML that is written as it is.
    void markup(const QString& html);

    /// Whether the output took everything so far.
    bool isWhole() const;

private:
    QXmlStreamWriter xml;
    bool tookMarkup = true;
};
