// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/logs/bandmarks.h"

#include <QSqlQuery>
#include <QString>
#include <QVariant>

class Database;

/// An SQL statement, its values in place of the question marks. Rows are read one after the other
/// and only once, to the end before anything else is asked on the connection. Everything throws
/// DatabaseError.
class Statement
{
public:
    Statement(Database& usedDatabase, const QString& sql);

    /// Runs it, as often as wanted. A value for SqlDialect::textParameter is a text's UTF-8.
    void run(const QVariantList& values = {});

    /// Goes to the next row, at first to the first one; false after the last.
    bool next();

    // The columns of the row, from 0.
    QVariant value(int column) const { return query.value(column); }
    int number(int column) const { return value(column).toInt(); }
    /// Of SqlDialect::utf8Of: any text, as it was stored.
    QString text(int column) const;
    /// Of packed marks; serial: whose, for the error.
    BandMarks marks(int column, const QString& serial) const;

    QVariant insertedId() const { return query.lastInsertId(); }

private:
    Database& database;
    QSqlQuery query;
};
