// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/attemptreader.h"

#include "yield/logs/attemptrules.h"
#include "yield/store/database.h"
#include "yield/store/schema.h"
#include "yield/store/stationrows.h"

#include <QHash>

#include <algorithm>

void attemptreader::forEachByUnit(Database& database, const Visit& visit,
                                  const std::optional<QString>& serial)
{
    const Transaction transaction(database, Database::Access::Read);
    schema::requireCurrent(database);
    QHash<int, StationRow> stations;
    for (const StationRow& row : StationRows::stations(database))
        stations.insert(row.id.toInt(), row);
    // SQL brings them by serial and time; those of one unit and second are put into order here.
    std::vector<Attempt> second;
    const auto finishSecond = [&] {
        std::sort(second.begin(), second.end(), attemptrules::isBefore);
        std::for_each(second.begin(), second.end(), visit);
        second.clear();
    };
    const QString condition = serial ? "WHERE serial {bytewise} = {text ?}" : "";
    Statement select(database,
                     "SELECT station_id, {bytes serial}, tested_at, marks FROM attempts " +
                         condition + " ORDER BY serial {bytewise}, tested_at {bytewise}");
    select.run(serial ? QVariantList{serial->toUtf8()} : QVariantList());
    while (select.next()) {
        const StationRow& station = stations[select.number(0)];
        const QString unit = select.text(1);
        const Attempt attempt{station.name, station.tests18, unit, select.value(2).toString(),
                              select.marks(3, unit)};
        if (!second.empty() && (second.front().serial != attempt.serial ||
                                second.front().testedAt != attempt.testedAt))
            finishSecond();
        second.push_back(attempt);
    }
    finishSecond();
}

std::vector<LastLog> attemptreader::lastLogs(Database& database, const QDateTime& now)
{
    const Transaction transaction(database, Database::Access::Read);
    schema::requireCurrent(database);
    Statement select(database, R"(
        SELECT {bytes name}, newest
        FROM stations LEFT JOIN
            (SELECT station_id, max(tested_at) AS newest
             FROM (SELECT station_id, tested_at FROM attempts
                   UNION ALL
                   SELECT station_id, tested_at FROM repeated_saves) AS logs
             WHERE tested_at <= ?
             GROUP BY station_id) AS newest_logs ON station_id = id
        ORDER BY name {bytewise})");
    select.run({now.toString(Qt::ISODate)});
    std::vector<LastLog> news;
    while (select.next())
        news.push_back({select.text(0), select.value(1).toString()});
    return news;
}
