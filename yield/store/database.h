// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/logs/bandmarks.h"

#include <QHash>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QStringList>
#include <QUuid>
#include <QVariant>

#include <stdexcept>

class QSqlError;

/// All that differs between the two databases.
struct SqlDialect {
    QString driver;
    /// For QSqlDatabase::setConnectOptions: how long to wait for others, and for a silent server.
    QString connectOptions;
    QStringList session;      ///< Run once for each connection.
    QStringList beginWriting; ///< Begin a transaction that excludes other writers.
    QStringList beginReading; ///< Begin one that sees the same rows from its beginning to its end.
    QString findSchema;       ///< Returns a row if the table schema_version exists.
    QStringList dataErrors;   ///< Beginnings of the error codes that a log is to blame for.

    // What stands in braces in a statement.
    QString id;       ///< The type of a column of row numbers.
    QString bytes;    ///< The type of a column of bytes.
    QString bytewise; ///< Compares texts by their UTF-8, whatever the language.
    QString text;     ///< A question mark whose value is a text's UTF-8.
    QString utf8;     ///< The UTF-8 of the column %1: {serial}, {name}.

    /// A statement with what stands in braces replaced.
    QString adapted(QString statement) const;

    static const SqlDialect& sqlite();
    static const SqlDialect& postgresql();
};

/// What went wrong with the database, in one line for users: it names the file or the server and
/// holds no password.
struct DatabaseError : std::runtime_error {
    enum class Kind {
        Unusable,    ///< The user must change the command line or the installation.
        Unavailable, ///< Another try may succeed: also after an update, of tables that are newer.
        Data         ///< This log, or the rows of this unit, cannot be stored or read.
    };

    DatabaseError(Kind kindOfError, const QString& text)
        : std::runtime_error(text.toStdString())
        , kind(kindOfError)
    {
    }

    Kind kind;
};

/// An open connection to the database of attempts, for the thread that made it. SQLite and
/// PostgreSQL have the same tables.
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

    /// Runs a script. Throws DatabaseError.
    void run(const QString& script);

    /// Runs a statement, which is prepared once for each connection. values: for the question
    /// marks; for {text} a text's UTF-8. Throws DatabaseError.
    QSqlQuery run(const QString& statement, const QVariantList& values);

    /// Throws an error of the driver.
    [[noreturn]] void fail(const QSqlError& error) const;

    /// Throws DatabaseError for an empty location and a malformed address, or with a password.
    static void check(const QString& location);

    /// The SQLite file in the user's data folder, for where no location is given.
    static QString defaultLocation();

private:
    /// Qt keeps connections by name.
    struct Link {
        ~Link();
        const QString name = QUuid::createUuid().toString();
        QSqlDatabase database;
    };

    void open(const QString& location, Access access);

    const SqlDialect& dialect;
    QString displayName; ///< The file, or the server without user and password.
    Link link;
    QHash<QString, QSqlQuery> queries; ///< Prepared, by their statements.
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

/// A statement that selects. Rows are read once, one after the other. Throws DatabaseError.
class Statement
{
public:
    /// Runs it, see Database::run.
    Statement(Database& usedDatabase, const QString& sql, const QVariantList& values = {});
    ~Statement() { query.finish(); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    /// Goes to the next row, at first to the first one; false after the last.
    bool next();

    // The columns of the row, from 0.
    QVariant value(int column) const { return query.value(column); }
    int number(int column) const { return value(column).toInt(); }
    /// Of {serial} and {name}: any text, as it was stored.
    QString text(int column) const;
    /// Of packed marks; serial: whose, for the error.
    BandMarks marks(int column, const QString& serial) const;

private:
    Database& database;
    QSqlQuery query;
};
