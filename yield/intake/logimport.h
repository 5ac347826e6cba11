// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/store/attemptstore.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

class Database;

/// Reads log files into the database.
namespace logimport
{
/// A file that was not stored, and why.
struct Problem {
    QString path;
    QString reason;
};

/// What became of files. Files that vanished before they were read are in no list.
struct Batch {
    StoreCounts counts;
    QStringList stored;              ///< Committed; duplicates and empty logs too.
    std::vector<Problem> rejected;   ///< No log, or refused by the tables: stays so.
    std::vector<Problem> unreadable; ///< Another try may succeed.
};

/// Stores the logs in the files, many in one transaction, and calls onBatch after each commit, also
/// once without a file: the database remembers the station. Throws DatabaseError if the database
/// fails, and what onBatch throws; what was committed before stays.
void store(Database& database, const Station& station, const QStringList& files,
           const std::function<void(const Batch&)>& onBatch);

/// Prints a line for each file that was not stored; returns how many there are.
int printProblems(const Batch& batch);

/// Prints what the user should look into, of logs that were added.
void printWarnings(const StoreCounts& counts);
} // namespace logimport
