// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/logs/logfiles.h"

#include <QString>

#include <vector>

class Database;

/// The station that logs come from.
struct Station {
    QString name;
    bool tests18 = false; ///< Tests component 18. Once true, the database keeps it.
};

/// What was done with logs.
struct StoreCounts {
    int added = 0;         ///< A new attempt, or a new save of one.
    int duplicates = 0;    ///< Imported before.
    int empty = 0;         ///< Without a mark: not stored.
    int otherStations = 0; ///< Of both: known at another station.
    int future = 0;        ///< Of those added: their date lies in the future.
};

/// Puts logs into the database. The rows that a set of logs leads to are the same whatever the
/// order, the repetitions and the number of programs that store them. Throws DatabaseError.
namespace attemptstore
{
/// Stores and counts all of the logs in one transaction, or none. The tables must have today's
/// version, see schema.h.
void store(Database& database, const Station& station, const std::vector<LogFile>& files,
           StoreCounts& counts);

/// Renames a station. If there is a station of the new name already, it gets the logs of both, each
/// log once, and tests component 18 if either does.
void renameStation(Database& database, const QString& oldName, const QString& newName);
} // namespace attemptstore
