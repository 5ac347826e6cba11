// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/database.h"

#include "yield/store/sqldialect.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSqlError>
#include <QSqlQuery>
#include <QStandardPaths>
#include <QUrl>
#include <QUuid>

namespace
{
/// The user has to change something first.
DatabaseError unusable(const QString& text)
{
    return {DatabaseError::Kind::Unusable, text};
}
} // namespace

Database::Link::~Link()
{
    database = QSqlDatabase();
    QSqlDatabase::removeDatabase(name);
}

Database::Database(const QString& location, Access access)
    : dialect(isAddress(location) ? SqlDialect::postgresql() : SqlDialect::sqlite())
    , isFile(!isAddress(location))
{
    Q_INIT_RESOURCE(store);
    check(location);
    if (!QSqlDatabase::isDriverAvailable(dialect.driver))
        throw unusable(QString("Qt's driver %1 is not installed (package %2)")
                           .arg(dialect.driver, dialect.driverPackage));
    open(location, access);
    prepareSession();
}

void Database::prepareSession()
{
    for (const QString& statement : dialect.session)
        run(statement);
    QSqlQuery query(dialect.findEncoding, link.database);
    if (!query.next())
        fail(query);
    if (query.value(0).toString().remove('-') != "UTF8")
        throw unusable(displayName +
                       ": the database must have the encoding UTF8, or it cannot hold "
                       "every serial; create it again");
}

void Database::run(const QString& statement)
{
    QSqlQuery query(link.database);
    if (!query.exec(statement))
        fail(query);
}

void Database::fail(const QSqlQuery& query)
{
    const DatabaseError error = errorOf(query.lastError());
    QSqlQuery("ROLLBACK", link.database);
    throw error;
}

void Database::open(const QString& location, Access access)
{
    link.name = QUuid::createUuid().toString();
    link.database = QSqlDatabase::addDatabase(dialect.driver, link.name);
    link.database.setConnectOptions(dialect.connectOptions);
    if (isFile) {
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
        throw errorOf(link.database.lastError());
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

DatabaseError Database::errorOf(const QSqlError& error) const
{
    const QString text = error.databaseText().trimmed();
    QString line = (text.isEmpty() ? error.driverText() : text).section('\n', 0, 0).trimmed();
    if (isFile && link.database.isOpen() && !QFileInfo::exists(displayName))
        line += " (the file was deleted or moved)";
    for (const QString& begin : dialect.dataErrors)
        if (error.nativeErrorCode().startsWith(begin))
            return {DatabaseError::Kind::Data, displayName + ": " + line};
    return {DatabaseError::Kind::Unavailable, displayName + ": " + line};
}

bool Database::isAddress(const QString& location)
{
    // A mistyped address is one too, or it would become the name of a file.
    return location.contains(QRegularExpression("://|^postgres(ql)?:"));
}

QString Database::defaultLocation()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + "/attempts.sqlite";
}

Transaction::Transaction(Database& usedDatabase, Database::Access access)
    : database(usedDatabase)
{
    const bool isReading = access == Database::Access::Read;
    const SqlDialect& dialect = database.sqlDialect();
    for (const QString& statement : isReading ? dialect.beginReading : dialect.beginWriting)
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
