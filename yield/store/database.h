// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QSqlDatabase>
#include <QString>

#include <stdexcept>

class QSqlError;
class QSqlQuery;
struct SqlDialect;

/// What went wrong with the database, in one line for users: it names the file or the server and
/// holds no password.
class DatabaseError : public std::runtime_error
{
public:
    enum class Kind {
        Unusable,    ///< The user must change the command line or the installation.
        NewerSchema, ///< Made by a newer program.
        Unavailable, ///< Another try may succeed.
        Data         ///< This log, or the rows of this unit, cannot be stored or read.
    };

    DatabaseError(Kind kindOfError, const QString& text)
        : std::runtime_error(text.toStdString())
        , errorKind(kindOfError)
    {
    }

    Kind kind() const { return errorKind; }
    QString text() const { return QString::fromUtf8(what()); }

private:
    Kind errorKind;
};

/// A connection to the database of attempts, open until it is destroyed; to be used on the thread
/// that made it. SQLite and PostgreSQL have the same tables.
class Database
{
public:
    enum class Access {
        Read, ///< The database must exist.
        Write ///< The file of SQLite is created where it is missing.
    };

    /// location: the path of an SQLite file, or postgresql://user@host:port/name. Changes no row.
    /// Throws DatabaseError.
    Database(const QString& location, Access access);
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    QSqlDatabase& connection() { return link.database; }
    const SqlDialect& sqlDialect() const { return dialect; }

    /// Runs a statement without values; what fails ends the transaction. Throws DatabaseError.
    void run(const QString& statement);

    /// Ends the transaction and throws what a query failed of. Otherwise PostgreSQL does not free
    /// the transaction's statements.
    [[noreturn]] void fail(const QSqlQuery& query);

    /// Throws DatabaseError for a location that can be no database's: without a name, or an address
    /// of another form or with a password in it.
    static void check(const QString& location);

    /// Whether a location is meant to be a server's address and not a file.
    static bool isAddress(const QString& location);

    /// The SQLite file in the user's data folder, for where no location is given.
    static QString defaultLocation();

private:
    /// Qt keeps connections by name.
    struct Link {
        ~Link();
        QString name;
        QSqlDatabase database;
    };

    DatabaseError errorOf(const QSqlError& error) const;
    void open(const QString& location, Access access);
    void prepareSession();

    const SqlDialect& dialect;
    QString displayName; ///< The file, or the server without user and password.
    bool isFile = false;
    Link link;
};

/// A transaction, undone unless it is committed. Everything throws DatabaseError.
class Transaction
{
public:
    /// Read: sees the same rows from its beginning to its end. Write: has no other writer beside it
    /// and waits for the one before, at most a minute.
    Transaction(Database& usedDatabase, Database::Access access);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    void commit();

private:
    Database& database;
};
