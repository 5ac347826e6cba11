// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/logs/attemptrules.h"
#include "yield/logs/stationlog.h"

#include <QString>

#include <functional>
#include <vector>

class Database;

/// Where logs come from.
struct Station {
    QString name;
    bool tests18 = false; ///< Once true for a name, the database keeps it.
};

/// What became of logs.
struct StoreCounts {
    int added = 0;      ///< A new attempt, or a new save of one.
    int known = 0;      ///< Already in the database.
    int notAttempt = 0; ///< Without any mark.
    int elsewhere = 0;  ///< Of those added: known under another station too.
    int future = 0;     ///< Of those added: their date lies in the future.

    StoreCounts& operator+=(const StoreCounts& other);
};

/// Puts logs into the database, by the rules of attemptrules. The rows that a set of logs leads to
/// are the same whatever the order, the repetitions and the number of programs that store them.
namespace attemptstore
{
/// All of the logs in one transaction, or none: throws DatabaseError.
StoreCounts store(Database& database, const Station& station, const std::vector<StationLog>& logs);

/// Gives a station another name. If there is a station of that name already, it gets the logs of
/// both, grouped anew, each log once, and tests component 18 if either does. Throws DatabaseError,
/// also where no station has the old name.
void renameStation(Database& database, const QString& oldName, const QString& newName);

/// Says, a line each, where attempts differ from what the marks of all logs come to. Gives the
/// number of the lines. Changes nothing. Throws DatabaseError.
int check(Database& database, const std::function<void(const QString&)>& say);
} // namespace attemptstore
