// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/printabletext.h"

QString printableText(const QString& text)
{
    QString clean = text;
    for (QChar& c : clean)
        if (c.category() == QChar::Other_Control || c.category() == QChar::Other_Format ||
            c == QChar::LineSeparator || c == QChar::ParagraphSeparator)
            c = QChar::ReplacementCharacter;
    return clean;
}
