// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/store/attemptstore.h"

#include <QString>
#include <QStringList>

#include <vector>

class Database;

/// Reads log files into the database.
namespace logimport
{
/// A file that was not stored, and why.
struct Problem {
    QString path;
    QString reason;
    bool isRejected; ///< No log, or refused by the tables; else another try may succeed.
};

/// What became of files. Files that vanished before they were read are in no list.
struct Result {
    StoreCounts counts;
    QStringList stored; ///< Duplicates and empty logs too.
    std::vector<Problem> problems;
};

/// The files of each transaction, so few that others wait for a moment only. At least one batch.
std::vector<QStringList> batches(const QStringList& files);

/// Stores a batch and adds to the result. The database knows the station afterwards, also without a
/// file. Throws DatabaseError.
void store(Database& database, const Station& station, const QStringList& files, Result& result);

/// Stores all files, batch by batch, and prints a line for each that was not stored.
Result importFiles(Database& database, const Station& station, const QStringList& files);

/// Prints what the user should look into, of logs that were added.
void printWarnings(const StoreCounts& counts);
} // namespace logimport
