// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/logs/attemptrules.h"

#include <QDateTime>

#include <functional>
#include <optional>
#include <vector>

class Database;

/// Reads attempts in one transaction. Throws DatabaseError, and what visit throws, which must not
/// ask the same database.
namespace attemptreader
{
using Visit = std::function<void(const std::vector<Attempt>&)>;

/// The attempts of each unit in the order of attemptrules::isBefore, the units by serial, the same
/// on both databases. serial: this unit only.
void forEachUnit(Database& database, const Visit& visit,
                 const std::optional<QString>& serial = std::nullopt);

/// The last log of each station that is not later than now, by the stations' names; repeated saves
/// count too.
std::vector<LastLog> lastLogs(Database& database, const QDateTime& now);
} // namespace attemptreader
