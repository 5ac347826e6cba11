// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/store/attemptstore.h"

#include <QString>
#include <QStringList>
#include <QTextStream>

#include <functional>

class Database;

/// Which logs go where.
struct ImportRequest {
    QString database;
    Station station;
    QStringList paths; ///< Folders and files.
};

/// What a command tells the shell, beside 0.
namespace exitstatus
{
constexpr int incomplete = 1; ///< A file was refused; a unit is not complete.
constexpr int failed = 2;     ///< The command could not do what it is for.
} // namespace exitstatus

namespace logimport
{
/// What is done about the files as they are read.
struct Listener {
    /// It cannot be read, is no log, or cannot be stored although the database works.
    std::function<void(const QString& path, const QString& reason)> refused;
    /// Committed. Called at least once.
    std::function<void(const QStringList& paths, const StoreCounts& counts)> stored;
};

/// Stores the logs in folders and files, many in one transaction. Throws DatabaseError if the
/// database fails; what was committed before stays.
void store(Database& database, const Station& station, const QStringList& paths,
           const Listener& listener);

/// What a person should look into, of logs that were added; a line each.
QStringList doubtsAbout(const StoreCounts& counts);

/// How a log that was refused is named.
QString refusal(const QString& path, const QString& reason);

/// Imports once. Gives the status for the shell. Throws DatabaseError if it cannot begin.
int run(const ImportRequest& request, QTextStream& out, QTextStream& errors);

/// Imports logs as they appear, until SIGTERM or SIGINT. Gives the status for the shell, or ends
/// the process with it where the database still holds a thread. To be called before any other
/// thread is started. Throws std::runtime_error for an address or a spool that cannot be used.
int watch(ImportRequest request, const QString& spoolFolder);
} // namespace logimport
