// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QSqlDatabase>
#include <QString>

class QSqlError;
struct SqlDialect;

/// A connection to the database of attempts, open until it is destroyed; to be used on the thread
/// that made it. SQLite and PostgreSQL have the same tables; what differs between them is in
/// database.cpp alone.
class Database
{
public:
    enum class Access {
        Read, ///< Nothing is created or written.
        Write ///< Missing tables are created, and so is the file of SQLite.
    };

    /// location: the path of an SQLite file, or postgresql://user@host:port/name.
    Database(const QString& location, Access access);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    bool isOpen() const { return problemText.isEmpty(); }
    /// Why the connection cannot be used, for people; empty if it can. It holds no password.
    const QString& problem() const { return problemText; }
    /// Whether another try is of no use: the location makes no sense, or what is there cannot be
    /// worked with.
    bool isHopeless() const { return hopeless; }

    QSqlDatabase& connection() { return database; }

    /// Begins a transaction with no other writer beside it: waits for the one before, at most a
    /// minute. False, with the reason in error, if that failed.
    bool beginWriting(QString& error);

    /// Whether a location is meant to be a server's address and not a file.
    static bool isAddress(const QString& location);

    /// The SQLite file in the user's data folder, for where no location is given.
    static QString defaultLocation();

    /// An error of the database in one line.
    static QString inWords(const QSqlError& error);

private:
    void openFile(const QString& path, Access access);
    void openServer(const QString& location);
    void checkSchema(Access access);
    void createSchema();
    int schemaVersion();
    bool run(const QString& statement);
    void fail(const QString& text, bool forGood);

    const SqlDialect* dialect = nullptr;
    const QString name;
    QSqlDatabase database;
    QString problemText;
    bool hopeless = false;
};
