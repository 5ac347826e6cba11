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

/// A log with what the tables have beside it.
struct LogRow {
    QVariant attemptId = {}; ///< Null for a row of repeated_saves, or none yet.
    int stationId = 0;
    StationLog log;
    std::optional<OutboxName> save = {}; ///< Nothing for an imported log.
    bool tests18 = false;                ///< Of an attempt.
};

/// Writes the rows of the tables, inside of a transaction. Everything throws DatabaseError.
class AttemptRows
{
public:
    explicit AttemptRows(Database& usedDatabase);

    /// All stations, by name.
    static QMap<QString, StationRow> stations(Database& database);

    /// Every row of that serial, time and marks, at whatever station.
    std::vector<LogRow> find(const StationLog& log);
    /// The attempt of a run.
    std::optional<LogRow> findRun(const QString& run);

    /// Inserts the attempt, or updates the one with its id.
    void writeAttempt(const LogRow& row);
    void removeAttempt(const QVariant& id);
    void insertRepeated(const LogRow& row);
    void removeRepeated(const LogRow& row);
    /// Removes the saves of a run from repeated_saves and returns them.
    std::vector<LogRow> takeRepeated(const QString& run);
    void moveRepeated(const QString& run, int stationId);

    /// Derives the results of attempts from their marks again. condition: of SQL, which ones.
    void deriveResults(const QString& condition);

private:
    void writeMissed(const QVariant& id, const std::vector<bandmarks::Band>& missed);

    Database& database;
    Statement selectLog;
    Statement selectRun;
    Statement insertAttempt;
    Statement updateAttempt;
    Statement insertMissed;
    Statement deleteMissed;
    Statement insertRepeatedSave;
};
