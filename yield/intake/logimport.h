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

/// Stores logs in transactions so short that others wait for a moment only. The database knows the
/// station afterwards, also without a file. Prints what the user should look into, of logs that
/// were added. Throws DatabaseError.
Result store(Database& database, const Station& station, const QStringList& files);

/// Prints a line for each file that was not stored.
void printProblems(const Result& result);
} // namespace logimport
