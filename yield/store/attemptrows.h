// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "unit/outboxname.h"
#include "yield/logs/stationlog.h"
#include "yield/store/database.h"

#include <vector>

/// A row of attempts or of repeated_saves.
struct LogRow {
    qint64 attemptId = 0; ///< 0 for a row of repeated_saves, and before it is written.
    bool tests18 = false; ///< Of an attempt.
    int stationId = 0;
    StationLog log;
    QString run = {}; ///< Null for an imported log.
    int save = 0;

    bool operator==(const LogRow& other) const
    {
        return attemptId == other.attemptId && tests18 == other.tests18 &&
               stationId == other.stationId && log == other.log && run == other.run &&
               save == other.save;
    }
};

/// Reads and writes rows, inside of a transaction. Everything throws DatabaseError.
namespace attemptrows
{
/// The rows of that serial, time and marks, at whatever station; and those of the run.
std::vector<LogRow> find(Database& database, const StationLog& log, const QString& run = {});

/// Inserts the attempt, or updates the one with its id, and derives its results.
void writeAttempt(Database& database, const LogRow& row);
void insertRepeated(Database& database, const LogRow& row);
void remove(Database& database, const LogRow& row);

/// Derives the results of the attempts again that an SQL condition selects.
void deriveResults(Database& database, const QString& condition);
} // namespace attemptrows
