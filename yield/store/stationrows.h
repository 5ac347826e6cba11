// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/logs/attemptrules.h"
#include "yield/store/statement.h"

#include <QMap>
#include <QStringList>

#include <functional>
#include <optional>
#include <vector>

/// A row of the table stations.
struct StationRow {
    QVariant id;
    QString name;
    bool tests18 = false;
};

/// The logs of one unit, other saves included.
struct UnitLogs {
    std::vector<attemptrules::Save> here;      ///< At the station.
    std::vector<attemptrules::Save> elsewhere; ///< At other stations.
    bool hasRows = false;                      ///< Whether the station has any in the database.
};

bool contains(const std::vector<attemptrules::Save>& saves, const attemptrules::Save& save);

/// The rows of one station, inside of a transaction. Everything throws DatabaseError.
class StationRows
{
public:
    /// So many units are looked up with one query. Qt names every value of a query, and SQLite
    /// compares each name with all others.
    static constexpr int lookupSize = 100;

    StationRows(Database& usedDatabase, const StationRow& row);

    /// All stations, by id.
    static std::vector<StationRow> stations(Database& database);
    static std::optional<StationRow> findStation(Database& database, const QString& name);

    /// From now on the station tests component 18: every attempt there missed it, or ended before
    /// it. Changes the row that is handed over too.
    static void beginToTest18(Database& database, StationRow& station);

    /// What the database has of so many units at most, by serial; of those without any log too.
    QMap<QString, UnitLogs> find(const QStringList& serials);

    using Visit = std::function<void(const QString& serial, const UnitLogs& logs)>;
    /// Every unit; visit may change its rows.
    void forEachUnit(const Visit& visit);

    /// Groups the logs of a unit at this station, and puts the rows of that in place of its rows.
    void write(const QString& serial, const UnitLogs& logs);
    /// The same for every unit.
    void writeAgain();

private:
    void insert(const QByteArray& serial, const attemptrules::Save& save);

    Database& database;
    const StationRow station;
    Statement findLogs;
    Statement insertAttempt;
    Statement insertMissedBand;
    Statement insertRepeated;
    Statement deleteAttempts;
    Statement deleteRepeated;
};
