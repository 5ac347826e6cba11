// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

#include <utility>

/// All that differs between the two databases.
struct SqlDialect {
    QString driver;
    QString driverPackage;
    /// For QSqlDatabase::setConnectOptions: how long to wait for others, and for a silent server.
    QString connectOptions;
    QStringList session;      ///< Run once for each connection.
    QStringList beginWriting; ///< Begin a transaction that excludes other writers.
    QStringList beginReading; ///< Begin one that sees the same rows from its beginning to its end.
    QString findEncoding;     ///< Gives the encoding of the database's texts.
    QString findSchema;       ///< Gives a row if the table schema_version is there.
    QStringList dataErrors;   ///< Beginnings of the error codes that a log is to blame for.

    /// Regular expressions for the words in braces of a statement, and what stands there instead:
    /// {id} a column of row numbers; {blob} one of bytes; {text ?} a text that is handed over as
    /// its UTF-8; {bytes X} the UTF-8 of a text; {bytewise} compares texts by it, whatever the
    /// language.
    QVector<std::pair<QString, QString>> words;

    static const SqlDialect& sqlite();
    static const SqlDialect& postgresql();
};
