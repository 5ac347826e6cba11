// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/database.h"

#include "yield/store/sqldialect.h"
#include "yield/store/statement.h"
#include "yield/store/stationrows.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSqlError>
#include <QStandardPaths>
#include <QUrl>
#include <QUuid>

namespace
{
constexpr int newestSchema = 2;

/// A person has to change something first.
DatabaseError unusable(const QString& text)
{
    return {DatabaseError::Kind::Unusable, text};
}

/// 0 without tables.
int findVersion(Database& database)
{
    Statement find(database, database.sqlDialect().findSchema);
    find.run();
    if (!find.next())
        return 0;
    Statement select(database, "SELECT version FROM schema_version");
    select.run();
    return select.next() ? select.number(0) : 0;
}

void run(Database& database, const char* resource)
{
    QFile file(resource);
    file.open(QIODevice::ReadOnly);
    const QString statements = QString::fromUtf8(file.readAll());
    for (const QString& statement : statements.split(";\n", Qt::SkipEmptyParts))
        Statement(database, statement).run();
}

void checkTables(Database& database, Database::Access access)
{
    const int version = findVersion(database);
    if (version > newestSchema)
        throw DatabaseError(
            DatabaseError::Kind::NewerSchema,
            QString("the database was made by a newer zorvi_yield, its tables have version %1; "
                    "install the newer one")
                .arg(version));
    if (version == newestSchema)
        return;
    if (access == Database::Access::Read)
        throw unusable(version == 0
                           ? "the database holds no attempts yet; \"import\" puts them there"
                           : "the database was made by an older zorvi_yield; \"import\" "
                             "carries it over, after that every command reads it");
    run(database, version == 0 ? ":/store/schema.sql" : ":/store/upgrade.sql");
    if (version != 0) // version 1 grouped by other rules
        for (const StationRow& station : StationRows::stations(database))
            StationRows(database, station).writeAgain();
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
    for (const QString& statement : dialect.session)
        Statement(*this, statement).run();
    Statement encoding(*this, dialect.findEncoding);
    encoding.run();
    while (encoding.next())
        if (encoding.value(0).toString().remove('-') != "UTF8")
            throw unusable(place + ": the database must have the encoding UTF8, or it cannot hold "
                                   "every serial; create it anew");
    Transaction(*this, access).commit(); // makes the tables, or sees that they are there
}

void Database::open(const QString& location, Access access)
{
    link.name = QUuid::createUuid().toString();
    link.database = QSqlDatabase::addDatabase(dialect.driver, link.name);
    link.database.setConnectOptions(dialect.connectOptions);
    if (isFile) {
        place = location;
        if (access == Access::Read && !QFileInfo::exists(place))
            throw unusable(QString("there is no database %1 yet; \"import\" makes one").arg(place));
        // A folder that the user named must be there already, or it was mistyped.
        if (place == defaultLocation())
            QDir().mkpath(QFileInfo(place).path());
        // For writing even for a reader: SQLite must undo what a killed import left half done.
        link.database.setDatabaseName(place);
    } else {
        const QUrl url(location, QUrl::StrictMode);
        place = QString("database %1 at %2").arg(url.path().mid(1), url.host());
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
    if (isFile && link.database.isOpen() && !QFileInfo::exists(place))
        line += " (the file was deleted or moved)";
    for (const QString& begin : dialect.dataErrors)
        if (error.nativeErrorCode().startsWith(begin))
            return {DatabaseError::Kind::Data, place + ": " + line};
    return {DatabaseError::Kind::Away, place + ": " + line};
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
    const SqlDialect& dialect = database.sqlDialect();
    try {
        const bool isReading = access == Database::Access::Read;
        for (const QString& begin : isReading ? dialect.beginReading : dialect.beginWriting)
            Statement(database, begin).run();
        checkTables(database, access);
    } catch (const DatabaseError&) {
        QSqlQuery(database.connection()).exec("ROLLBACK");
        throw;
    }
}

Transaction::~Transaction()
{
    QSqlQuery(database.connection()).exec("ROLLBACK"); // nothing is left to undo after commit()
}

void Transaction::commit()
{
    Statement(database, "COMMIT").run();
}
