// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

#include <stdexcept>

/// What went wrong with the database, in one line for people: it names the file or the server and
/// holds no password.
class DatabaseError : public std::runtime_error
{
public:
    enum class Kind {
        Unusable,    ///< A person must change the command line or the installation.
        NewerSchema, ///< Made by a newer program.
        Away,        ///< Another try may succeed.
        Data         ///< This log, or the rows of this unit, cannot be stored or read.
    };

    DatabaseError(Kind kindOfError, const QString& text)
        : std::runtime_error(text.toStdString())
        , errorKind(kindOfError)
    {
    }

    Kind kind() const { return errorKind; }
    QString text() const { return QString::fromUtf8(what()); }

private:
    Kind errorKind;
};
