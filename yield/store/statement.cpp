// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/statement.h"

#include "yield/logs/printabletext.h"
#include "yield/store/database.h"

#include <QSqlError>

Statement::Statement(Database& usedDatabase, const QString& sql)
    : database(usedDatabase)
    , statement(sql)
    , query(database.connection())
{
    query.setForwardOnly(true); // otherwise every row stays in memory
}

void Statement::run(const QVariantList& values)
{
    if (values.isEmpty()) { // not all that has no values can be prepared
        if (!query.exec(statement))
            fail();
        return;
    }
    if (!isPrepared && !query.prepare(statement))
        fail();
    isPrepared = true;
    for (int i = 0; i < values.size(); ++i)
        query.bindValue(i, values[i]);
    if (!query.exec())
        fail();
}

bool Statement::next()
{
    if (query.next())
        return true;
    if (query.lastError().isValid())
        fail();
    query.finish();
    return false;
}

/// The transaction is over before this statement goes: in a failed one PostgreSQL does not free it.
void Statement::fail()
{
    const DatabaseError error = database.errorOf(query.lastError());
    QSqlQuery(database.connection()).exec("ROLLBACK");
    throw error;
}

QString Statement::text(int column) const
{
    const QByteArray bytes = value(column).toByteArray();
    if (bytes.isEmpty())
        return ""; // not a null text, which would be stored as NULL
    const QString text = QString::fromUtf8(bytes);
    // A byte order mark in front belongs to the text, but is not converted.
    return bytes.startsWith("\xEF\xBB\xBF") ? QChar(QChar::ByteOrderMark) + text : text;
}

BandMarks Statement::marks(int column, const QString& serial) const
{
    const QByteArray bytes = value(column).toByteArray();
    if (bytes.size() != bandmarks::packedSize)
        throw DatabaseError(
            DatabaseError::Kind::Data,
            QString("the marks of an attempt in the database are damaged (serial \"%1\")")
                .arg(printableText(serial)));
    return bandmarks::unpacked(bytes);
}
