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

/// The logs of one unit at a station, as they are in the database.
struct UnitLogs {
    attemptrules::Attempts grouped;
    std::vector<attemptrules::Save> elsewhere; ///< At other stations.

    std::vector<attemptrules::Save> all() const; ///< At this station.
    bool hold(const attemptrules::Save& save) const;
    bool holdElsewhere(const attemptrules::Save& save) const;
};

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
    /// Every unit, some at a time; visit may change its rows.
    void forEachUnit(const Visit& visit);

    /// Groups the logs of a unit and these anew, and changes the rows that differ.
    void group(const QString& serial, const UnitLogs& present,
               const std::vector<attemptrules::Save>& added = {});
    /// Groups the logs of a unit anew and writes all of its rows again.
    void writeAgain(const QString& serial, const UnitLogs& present);
    void remove(const QString& serial, const UnitLogs& present);

private:
    void change(const QString& serial, const attemptrules::Attempts& present,
                const attemptrules::Attempts& wanted);
    void insert(const QString& serial, const attemptrules::Save& save);

    /// The next serials after this one, or the first ones.
    QStringList serialsAfter(const std::optional<QString>& serial);

    Database& database;
    const StationRow station;
    Statement findAttempts;
    Statement findRepeated;
    Statement insertAttempt;
    Statement insertMissedBand;
    Statement deleteAttempt;
    Statement insertRepeated;
    Statement deleteRepeated;
};
