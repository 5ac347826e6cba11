// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

#include <cstdio>

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

/// Prints whole lines, at once.
namespace messages
{
inline void print(const QString& line, std::FILE* stream = stdout)
{
    std::fputs((line + '\n').toLocal8Bit().constData(), stream);
    std::fflush(stream);
}

/// On standard error: what the user should know.
inline void warn(const QString& line)
{
    print(line, stderr);
}
} // namespace messages
