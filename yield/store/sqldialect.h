// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <QStringList>

/// All that differs between the two databases.
struct SqlDialect {
    QString driver;
    QString driverPackage;
    /// For QSqlDatabase::setConnectOptions: how long to wait for others, and for a silent server.
    QString connectOptions;
    QStringList session;      ///< Run once for each connection.
    QStringList beginWriting; ///< Begin a transaction that excludes other writers.
    QString beginReading;     ///< Begin one that sees the same rows from its beginning to its end.
    /// Gives a row if the database cannot hold every text; empty where all can.
    QString findNarrowEncoding;
    QString findSchema;     ///< Gives a row if the table schema_version is there.
    QStringList dataErrors; ///< Beginnings of the error codes that a log is to blame for.

    // Words of a statement; %1 is an argument.
    QString idColumn;         ///< {id}
    QString bytesColumn;      ///< {blob}
    QString keyOnlyTable;     ///< {keyonly}: ends a table whose primary key is all that it has
    bool textAsBytes = false; ///< Whether a text is handed over as its UTF-8.
    QString textOf;           ///< {text_of X}: X as it is handed over
    QString bytesOf;          ///< {bytes_of X}
    QString byBytes;          ///< {by_bytes X}: compared by its UTF-8, whatever the language

    static const SqlDialect& sqlite();
    static const SqlDialect& postgresql();

    /// A statement with the words of this dialect in place of those in braces.
    QString worded(const QString& statement) const;
};
