// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/logs/attemptrules.h"
#include "yield/store/statement.h"

#include <QMap>
#include <QStringList>

#include <functional>

/// The rows of one station, inside of a transaction. Everything throws DatabaseError.
class StationRows
{
public:
    /// So many units are looked up with one query. Qt names every value of a query, and SQLite
    /// compares each name with all others.
    static constexpr int lookupSize = 100;

    StationRows(Database& usedDatabase, const QVariant& id, bool testsComponent18);

    /// The logs of so many units at most, by serial; those without any too.
    QMap<QString, attemptrules::Attempts> find(const QStringList& serials);

    /// Changes the rows of a unit from what is there to what is wanted.
    void change(const QString& serial, const attemptrules::Attempts& present,
                const attemptrules::Attempts& wanted);

private:
    void find(Statement& statement, const QStringList& serials,
              const std::function<void(const QString& serial, const attemptrules::Save&)>& visit);
    void insert(const QString& serial, const attemptrules::Save& save);

    Database& database;
    const QVariant stationId;
    const bool tests18;
    Statement findAttempts;
    Statement findOthers;
    Statement insertAttempt;
    Statement insertMissedBand;
    Statement deleteAttempt;
    Statement insertOther;
    Statement deleteOther;
};
