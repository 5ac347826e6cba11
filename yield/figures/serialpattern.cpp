// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/figures/serialpattern.h"

namespace
{
/// A serial is no path, so Qt, whose wildcards end at a slash, gets to see a NUL instead: no serial
/// holds one.
QString withoutSlashes(QString text)
{
    return text.replace('/', QChar(QChar::Null));
}
} // namespace

SerialPattern::SerialPattern(const QString& wildcard)
    : expression(QRegularExpression::wildcardToRegularExpression(withoutSlashes(wildcard)))
{
}

bool SerialPattern::matches(const QString& serial) const
{
    return expression.match(withoutSlashes(serial)).hasMatch();
}
