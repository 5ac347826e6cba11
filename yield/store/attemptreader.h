// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/logs/attempt.h"

#include <QDateTime>

#include <functional>
#include <vector>

class Database;

/// Reads attempts, row by row and each function in one transaction of its own. All throw
/// DatabaseError, and let through what visit throws; visit must not ask the same database.
namespace attemptreader
{
using Visit = std::function<void(const Attempt&)>;

/// Every attempt by serial, time, station's name, number of marks and packed marks, all by their
/// bytes: the same order on both databases. Holds the attempts at one unit at a time.
void forEachByUnit(Database& database, const Visit& visit);

/// The attempts at one unit, in the same order.
void forEachOf(Database& database, const QString& serial, const Visit& visit);

/// Every attempt by time, then serial and station's name.
void forEachByTime(Database& database, const Visit& visit);

/// The newest log of each station that is not later than now (this computer's wall clock), by the
/// stations' names; saves that are no attempt of their own count too.
std::vector<StationNews> newestLogs(Database& database, const QDateTime& now);
} // namespace attemptreader
