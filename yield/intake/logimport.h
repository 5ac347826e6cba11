// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/store/attemptstore.h"

#include <QString>
#include <QStringList>

#include <vector>

class Database;

namespace logimport
{
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

/// In one transaction: others wait for a moment only.
constexpr int maxLogsAtOnce = 1000;

/// Stores logs. The database knows the station afterwards, also without a file. Prints what the
/// user should look into, of logs that were added. Throws DatabaseError.
Result store(Database& database, const Station& station, const QStringList& files);

/// Prints a line for each file that was not stored.
void printProblems(const Result& result);
} // namespace logimport
