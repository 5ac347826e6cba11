// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <QStringList>

/// All that differs between the two databases.
struct SqlDialect {
    QString driver;
    /// For QSqlDatabase::setConnectOptions: how long to wait for others, and for a silent server.
    QString connectOptions;
    QStringList session;      ///< Run once for each connection.
    QStringList beginWriting; ///< Begin a transaction that excludes other writers.
    QStringList beginReading; ///< Begin one that sees the same rows from its beginning to its end.
    QString findSchema;       ///< Returns a row if the table schema_version exists.
    QStringList dataErrors;   ///< Beginnings of the error codes that a log is to blame for.

    // What stands in braces in a statement.
    QString id;       ///< The type of a column of row numbers.
    QString bytes;    ///< The type of a column of bytes.
    QString bytewise; ///< Compares texts by their UTF-8, whatever the language.
    QString text;     ///< A question mark whose value is a text's UTF-8.
    QString utf8;     ///< The UTF-8 of the column %1: {serial}, {name}.

    /// A statement with what stands in braces replaced.
    QString adapted(QString statement) const;

    static const SqlDialect& sqlite();
    static const SqlDialect& postgresql();
};
