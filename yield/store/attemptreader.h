// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/logs/attempt.h"

#include <QDateTime>

#include <functional>
#include <optional>
#include <vector>

class Database;

/// Reads attempts, row by row and each function in one transaction. All throw DatabaseError, and
/// let through what visit throws; visit must not ask the same database.
namespace attemptreader
{
using Visit = std::function<void(const Attempt&)>;

/// Every attempt by serial, time, station's name, number of marks and packed marks, all by their
/// bytes: the same order on both databases. serial: of this unit only.
void forEachByUnit(Database& database, const Visit& visit,
                   const std::optional<QString>& serial = std::nullopt);

/// The last log of each station that is not later than now (this computer's wall clock), by the
/// stations' names; repeated saves count too.
std::vector<LastLog> lastLogs(Database& database, const QDateTime& now);
} // namespace attemptreader
