// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/attemptstore.h"

#include "yield/logs/attemptrules.h"
#include "yield/logs/printabletext.h"
#include "yield/store/database.h"
#include "yield/store/schema.h"
#include "yield/store/stationrows.h"

#include <QDateTime>

#include <algorithm>

namespace
{
/// Clocks of two computers differ by a little.
constexpr int futureSeconds = 600;

bool contains(const std::vector<StationLog>& logs, const StationLog& log)
{
    return std::find(logs.begin(), logs.end(), log) != logs.end();
}

/// The row of the station with these logs, made or changed if need be.
StationRow updatedStation(Database& database, const Station& station,
                          const std::vector<StationLog>& logs)
{
    Statement(database, "INSERT INTO stations (name) VALUES ({text ?}) ON CONFLICT DO NOTHING")
        .run({station.name.toUtf8()});
    StationRow row = StationRows::stations(database)[station.name];
    // Marks of component 18 among the logs say that the station tests it.
    const bool isShown = std::any_of(logs.begin(), logs.end(), [](const StationLog& log) {
        return (log.marks & attemptrules::channelButtonMarks()).any();
    });
    if (!row.tests18 && (station.tests18 || isShown)) {
        Statement(database, "UPDATE stations SET tests_18 = 1 WHERE id = ?").run({row.id});
        row.tests18 = true;
        StationRows(database, row).writeAgain(); // every attempt missed it, or ended before it
    }
    return row;
}

/// Adds the logs that the station does not have yet.
StoreCounts add(StationRows& rows, const std::vector<StationLog>& logs)
{
    const QString future =
        QDateTime::currentDateTime().addSecs(futureSeconds).toString(Qt::ISODate);
    StoreCounts counts;
    for (const StationLog& log : logs) {
        UnitLogs unit = rows.find(log.serial);
        if (log.marks.none()) {
            ++counts.empty;
        } else if (contains(unit.here, log)) {
            ++counts.duplicates;
        } else {
            ++counts.added;
            counts.otherStations += contains(unit.elsewhere, log) ? 1 : 0;
            counts.future += log.testedAt > future ? 1 : 0;
            if (!unit.here.empty())
                rows.remove(log.serial);
            unit.here.push_back(log);
            rows.write(unit.here);
        }
    }
    return counts;
}

/// Moves all logs of a station to another one.
void merge(Database& database, const StationRow& from, const StationRow& to)
{
    StationRows source(database, from);
    StationRows target(database, to);
    source.forEachUnit([&](const QString& serial, const UnitLogs& logs) {
        source.remove(serial);
        add(target, logs.here);
    });
    Statement(database, "DELETE FROM stations WHERE id = ?").run({from.id});
}
} // namespace

StoreCounts& StoreCounts::operator+=(const StoreCounts& other)
{
    added += other.added;
    duplicates += other.duplicates;
    empty += other.empty;
    otherStations += other.otherStations;
    future += other.future;
    return *this;
}

StoreCounts attemptstore::store(Database& database, const Station& station,
                                const std::vector<LogFile>& files)
{
    std::vector<StationLog> logs;
    for (const LogFile& file : files)
        logs.push_back(file.log);
    Transaction transaction(database, Database::Access::Write);
    schema::requireCurrent(database);
    StationRows rows(database, updatedStation(database, station, logs));
    const StoreCounts counts = add(rows, logs);
    transaction.commit();
    return counts;
}

void attemptstore::renameStation(Database& database, const QString& oldName, const QString& newName)
{
    Transaction transaction(database, Database::Access::Write);
    schema::requireCurrent(database);
    const auto stations = StationRows::stations(database);
    if (!stations.contains(oldName))
        throw DatabaseError(DatabaseError::Kind::Unusable,
                            QString("no station is named \"%1\"").arg(printableText(oldName)));
    const StationRow from = stations[oldName];
    if (!stations.contains(newName))
        Statement(database, "UPDATE stations SET name = {text ?} WHERE id = ?")
            .run({newName.toUtf8(), from.id});
    else if (newName != oldName)
        merge(database, from, updatedStation(database, {newName, from.tests18}, {}));
    transaction.commit();
}
