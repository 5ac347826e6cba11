// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/database.h"

#include "yield/logs/messages.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSqlError>
#include <QStandardPaths>
#include <QUrl>

namespace
{
DatabaseError unusable(const QString& text)
{
    return {DatabaseError::Kind::Unusable, text};
}

bool isAddress(const QString& location)
{
    // A mistyped address is one too, or it would become the name of a file.
    return location.contains(QRegularExpression("://|^postgres(ql)?:"));
}
} // namespace

Database::Link::~Link()
{
    database = QSqlDatabase();
    QSqlDatabase::removeDatabase(name);
}

Database::Database(const QString& location, Access access)
    : dialect(isAddress(location) ? SqlDialect::postgresql() : SqlDialect::sqlite())
{
    Q_INIT_RESOURCE(store);
    check(location);
    open(location, access);
    for (const QString& statement : dialect.session)
        run(statement);
}

void Database::run(const QString& script)
{
    QSqlQuery query(link.database);
    if (!query.exec(dialect.adapted(script)))
        fail(query.lastError());
}

QSqlQuery Database::run(const QString& statement, const QVariantList& values)
{
    if (!queries.contains(statement)) {
        QSqlQuery query(link.database);
        query.setForwardOnly(true); // otherwise every row stays in memory
        if (!query.prepare(dialect.adapted(statement)))
            fail(query.lastError());
        queries.insert(statement, query);
    }
    QSqlQuery query = queries[statement];
    for (int i = 0; i < values.size(); ++i)
        query.bindValue(i, values[i]);
    if (!query.exec())
        fail(query.lastError());
    return query;
}

void Database::open(const QString& location, Access access)
{
    link.database = QSqlDatabase::addDatabase(dialect.driver, link.name);
    link.database.setConnectOptions(dialect.connectOptions);
    if (!isAddress(location)) {
        displayName = location;
        if (access == Access::Read && !QFileInfo::exists(displayName))
            throw unusable(
                QString("there is no database %1 yet; \"import\" makes one").arg(displayName));
        // A folder that the user named must be there already, or it was mistyped.
        if (displayName == defaultLocation())
            QDir().mkpath(QFileInfo(displayName).path());
        // For writing even for a reader: SQLite must undo what a killed import left half done.
        link.database.setDatabaseName(displayName);
    } else {
        const QUrl url(location, QUrl::StrictMode);
        displayName = QString("database %1 at %2").arg(url.path().mid(1), url.host());
        link.database.setHostName(url.host());
        link.database.setPort(url.port());
        link.database.setUserName(url.userName());
        link.database.setDatabaseName(url.path().mid(1));
    }
    if (!link.database.open())
        fail(link.database.lastError());
}

void Database::check(const QString& location)
{
    if (location.isEmpty())
        throw unusable("the database has no name");
    if (!isAddress(location))
        return;
    // No message repeats the text: there might be a password in it.
    if (location.section(':', 1).section('@', 0, -2).contains(':'))
        throw unusable("a password does not belong in the database's address, where others can "
                       "see it; put it into ~/.pgpass or PGPASSWORD");
    static const QRegularExpression form("^postgres(ql)?://([^/@]*@)?[^/@]*/[^/?#]+$");
    if (!form.match(location).hasMatch() || !QUrl(location, QUrl::StrictMode).isValid())
        throw unusable("the address of a database server has the form "
                       "postgresql://user@host:port/name");
}

void Database::fail(const QSqlError& error) const
{
    const QString text = error.databaseText().trimmed();
    const QString line = (text.isEmpty() ? error.driverText() : text).section('\n', 0, 0).trimmed();
    DatabaseError::Kind kind = DatabaseError::Kind::Unavailable;
    for (const QString& begin : dialect.dataErrors)
        if (error.nativeErrorCode().startsWith(begin))
            kind = DatabaseError::Kind::Data;
    throw DatabaseError(kind, displayName + ": " + line);
}

QString Database::defaultLocation()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + "/attempts.sqlite";
}

Transaction::Transaction(Database& usedDatabase, Database::Access access)
    : database(usedDatabase)
{
    const SqlDialect& dialect = database.sqlDialect();
    for (const QString& statement :
         access == Database::Access::Read ? dialect.beginReading : dialect.beginWriting)
        database.run(statement);
}

Transaction::~Transaction()
{
    QSqlQuery(database.connection()).exec("ROLLBACK"); // nothing is left to undo after commit()
}

void Transaction::commit()
{
    database.run("COMMIT");
}

Statement::Statement(Database& usedDatabase, const QString& sql, const QVariantList& values)
    : database(usedDatabase)
    , query(database.run(sql, values))
{
}

bool Statement::next()
{
    if (query.next())
        return true;
    if (query.lastError().isValid())
        database.fail(query.lastError());
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
