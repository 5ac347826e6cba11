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
    QStringList beginReading; ///< Begin one that sees the same rows from its beginning to its end.
    QString findEncoding;     ///< Returns the encoding of the database's texts.
    QString findSchema;       ///< Returns a row if the table schema_version exists.
    QStringList dataErrors;   ///< Beginnings of the error codes that a log is to blame for.

    QString idType;    ///< Of a column of row numbers, {id} in the scripts.
    QString bytesType; ///< Of a column of bytes, {bytes} in the scripts.
    /// Compares texts by their UTF-8, whatever the language, {bytewise} in the scripts.
    QString bytewise;
    QString textParameter; ///< A question mark whose value is a text's UTF-8.
    QString utf8;          ///< The UTF-8 of the column %1.

    /// The UTF-8 of a column of texts.
    QString utf8Of(const char* column) const { return utf8.arg(column); }

    static const SqlDialect& sqlite();
    static const SqlDialect& postgresql();
};
