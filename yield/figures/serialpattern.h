// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QRegularExpression>
#include <QString>

/// A shell-style wildcard for whole serials: * stands for any characters or none, ? for one, [abc]
/// and [a-z] for one of these, [!abc] for one other. Upper and lower case differ.
class SerialPattern
{
public:
    explicit SerialPattern(const QString& wildcard);

    /// Without, it must not be matched: a bracket is open, or a range runs backwards.
    bool isValid() const { return expression.isValid(); }
    bool matches(const QString& serial) const;

private:
    QRegularExpression expression;
};
