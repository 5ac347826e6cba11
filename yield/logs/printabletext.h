// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

/// The text for a terminal or a page: control and format characters, and line ends, are replaced by
/// U+FFFD. A serial can hold any of them.
inline QString printableText(QString text)
{
    for (QChar& c : text)
        if (c.category() == QChar::Other_Control || c.category() == QChar::Other_Format ||
            c == QChar::LineSeparator || c == QChar::ParagraphSeparator)
            c = QChar::ReplacementCharacter;
    return text;
}
