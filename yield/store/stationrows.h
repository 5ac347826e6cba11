// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/logs/stationlog.h"
#include "yield/store/statement.h"

#include <QMap>

#include <functional>
#include <vector>

/// A row of the table stations.
struct StationRow {
    QVariant id;
    QString name;
    bool tests18 = false;
};

/// The logs of one unit, other saves included.
struct UnitLogs {
    std::vector<StationLog> here;      ///< At the station.
    std::vector<StationLog> elsewhere; ///< At other stations.
};

/// The rows of one station, inside of a transaction. Everything throws DatabaseError.
class StationRows
{
public:
    StationRows(Database& usedDatabase, const StationRow& row);

    /// All stations, by name.
    static QMap<QString, StationRow> stations(Database& database);

    UnitLogs find(const QString& serial);

    using Visit = std::function<void(const QString& serial, const UnitLogs& logs)>;
    /// Every unit; visit may change its rows.
    void forEachUnit(const Visit& visit);

    void remove(const QString& serial);
    /// Groups all logs of a unit without any row, and adds the rows of that.
    void write(const std::vector<StationLog>& logs);
    /// Groups the logs of every unit anew.
    void writeAgain();

private:
    Database& database;
    const StationRow station;
    Statement findLogs;
    Statement insertAttempt;
    Statement insertMissedBand;
    Statement insertRepeated;
    Statement deleteAttempts;
    Statement deleteRepeated;
};
