// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/logs/attempt.h"

#include <QString>

#include <functional>

class QSqlDatabase;

namespace attemptreader
{
/// Calls visit with every attempt, by time. Holds one at a time. False, with the reason in error,
/// if the database failed.
bool forEach(QSqlDatabase& database, const std::function<void(const Attempt&)>& visit,
             QString& error);

/// The same for the attempts at one unit, at all stations.
bool forEachOf(QSqlDatabase& database, const QString& serial,
               const std::function<void(const Attempt&)>& visit, QString& error);
} // namespace attemptreader
