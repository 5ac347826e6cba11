// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "unit/outboxname.h"
#include "yield/logs/stationlog.h"
#include "yield/store/statement.h"

#include <QMap>

#include <optional>
#include <vector>

/// A row of the table stations.
struct StationRow {
    int id = 0;
    QString name;
    bool tests18 = false;
};

/// A row of attempts or of repeated_saves.
struct LogRow {
    QVariant attemptId = {}; ///< Null for a row of repeated_saves, and before it is written.
    int stationId = 0;
    StationLog log;
    std::optional<OutboxName> save = {}; ///< Nothing for an imported log.
    bool tests18 = false;                ///< Of an attempt.
};

/// Reads and writes rows, inside of a transaction. Everything throws DatabaseError.
class AttemptRows
{
public:
    explicit AttemptRows(Database& usedDatabase);

    /// All stations, by name.
    static QMap<QString, StationRow> stations(Database& database);

    /// The rows of that serial, time and marks, at whatever station; and the attempt of the run.
    std::vector<LogRow> find(const StationLog& log, const QString& run = {});

    /// Inserts the attempt, or updates the one with its id, and derives its results.
    void writeAttempt(const LogRow& row);
    void removeAttempt(const QVariant& id);
    void insertRepeated(const LogRow& row);
    void removeRepeated(const LogRow& row);
    void moveRepeated(const QString& run, int stationId);

    /// Derives the results of the attempts again that an SQL condition selects.
    void deriveResults(const QString& condition);

private:
    Database& database;
    Statement selectLog;
    Statement insertAttempt;
    Statement updateAttempt;
    Statement insertMissed;
    Statement deleteMissed;
};
