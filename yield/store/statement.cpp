// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/statement.h"

#include "yield/logs/printabletext.h"
#include "yield/store/database.h"
#include "yield/store/sqldialect.h"

#include <QSqlError>

Statement::Statement(Database& usedDatabase, const QString& sql)
    : database(usedDatabase)
    , statement(database.sqlDialect().worded(sql))
    , query(database.connection())
{
    query.setForwardOnly(true); // otherwise every row stays in memory
}

void Statement::run()
{
    if (!query.exec(statement))
        throw database.errorOf(query.lastError());
}

void Statement::run(const QVariantList& values)
{
    if (!isPrepared && !query.prepare(statement))
        throw database.errorOf(query.lastError());
    isPrepared = true;
    for (int i = 0; i < values.size(); ++i)
        query.bindValue(i, values[i]);
    if (!query.exec())
        throw database.errorOf(query.lastError());
}

bool Statement::next()
{
    if (query.next())
        return true;
    if (query.lastError().isValid())
        throw database.errorOf(query.lastError());
    query.finish();
    return false;
}

QString Statement::text(int column) const
{
    const QByteArray utf8 = bytes(column);
    const QByteArray byteOrderMark = "\xEF\xBB\xBF"; // which QString takes away
    if (utf8.startsWith(byteOrderMark))
        return QChar(QChar::ByteOrderMark) + QString::fromUtf8(utf8.mid(byteOrderMark.size()));
    return QString::fromUtf8(utf8);
}

QVariant Statement::valueOf(const QString& text) const
{
    return database.sqlDialect().textAsBytes ? QVariant(text.toUtf8()) : QVariant(text);
}

BandMarks Statement::marks(int column, const QString& serial) const
{
    const auto marks = bandmarks::unpacked(bytes(column));
    if (!marks)
        throw DatabaseError(
            DatabaseError::Kind::Data,
            QString("the marks of an attempt in the database are damaged (serial \"%1\")")
                .arg(printableText(serial)));
    return *marks;
}
