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

    bool operator==(const LogRow& other) const;
};

/// Reads and writes rows, inside of a transaction. Everything throws DatabaseError.
class AttemptRows
{
public:
    explicit AttemptRows(Database& usedDatabase);

    /// The rows of that serial, time and marks, at whatever station; and those of the run.
    std::vector<LogRow> find(const StationLog& log, const QString& run = {});

    /// Inserts the attempt, or updates the one with its id, and derives its results.
    void writeAttempt(const LogRow& row);
    void insertRepeated(const LogRow& row);
    void remove(const LogRow& row);

    /// Derives the results of the attempts again that an SQL condition selects.
    void deriveResults(const QString& condition);

private:
    Database& database;
    Statement selectRows;
    Statement insertAttempt;
    Statement updateAttempt;
    Statement insertMissed;
    Statement deleteMissed;
};
