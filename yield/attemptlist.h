// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/bandmarks.h"

#include <QString>

#include <functional>
#include <vector>

class QSqlDatabase;

/// One attempt at a unit, as the database has it.
struct Attempt {
    QString station;
    QString serial;
    QString testedAt; ///< yyyy-MM-ddTHH:mm:ss
    bool isComplete = false;
    BandMarks marks;
    std::vector<bandmarks::Band> missed; ///< In the order of the components.
};

namespace attemptlist
{
/// Calls visit with every attempt, by time. Holds one at a time. False, with the reason in error,
/// if the database failed.
bool forEach(QSqlDatabase& database, const std::function<void(const Attempt&)>& visit,
             QString& error);

/// The same for the attempts at one unit, at all stations.
bool forEachOf(QSqlDatabase& database, const QString& serial,
               const std::function<void(const Attempt&)>& visit, QString& error);
} // namespace attemptlist
