// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/statement.h"

#include "yield/logs/printabletext.h"
#include "yield/store/database.h"

#include <QSqlError>

Statement::Statement(Database& usedDatabase, const QString& sql)
    : database(usedDatabase)
    , query(database.connection())
{
    query.setForwardOnly(true); // otherwise every row stays in memory
    if (!query.prepare(sql))
        database.fail(query);
}

void Statement::run(const QVariantList& values)
{
    for (int i = 0; i < values.size(); ++i)
        query.bindValue(i, values[i]);
    if (!query.exec())
        database.fail(query);
}

bool Statement::next()
{
    if (query.next())
        return true;
    if (query.lastError().isValid())
        database.fail(query);
    query.finish();
    return false;
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
