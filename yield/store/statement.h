// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/logs/bandmarks.h"

#include <QSqlQuery>
#include <QString>
#include <QVariant>

class Database;

/// An SQL statement, its values in place of the question marks. Rows are read one after the other
/// and only once; nothing else may be asked on the connection until they are read to the end.
/// Everything throws DatabaseError.
class Statement
{
public:
    /// sql: with the words of SqlDialect in braces. Nothing is asked yet.
    Statement(Database& usedDatabase, const QString& sql);

    /// Runs it as it stands.
    void run();
    /// Runs it with values, as often as wanted.
    void run(const QVariantList& values);

    /// Goes to the next row, at first to the first one; false after the last.
    bool next();

    // The columns of the row, from 0.
    int number(int column) const { return query.value(column).toInt(); }
    QVariant value(int column) const { return query.value(column); }
    QByteArray bytes(int column) const { return query.value(column).toByteArray(); }
    /// Of a column of ASCII.
    QString plainText(int column) const { return query.value(column).toString(); }
    /// Of {bytes_of X}: any text, as it was stored.
    QString text(int column) const;

    /// Of packed marks; serial: whose, for the error.
    BandMarks marks(int column, const QString& serial) const;

    /// The id of the row that was inserted.
    QVariant insertedId() const { return query.lastInsertId(); }

    /// The value for {statementof ?}.
    QVariant valueOf(const QString& text) const;

private:
    [[noreturn]] void fail();

    Database& database;
    const QString statement;
    bool isPrepared = false;
    QSqlQuery query;
};
