// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/attemptreader.h"

#include "yield/logs/attemptrules.h"
#include "yield/store/database.h"
#include "yield/store/stationrows.h"

#include <QHash>

#include <algorithm>

namespace
{
/// clause: which attempts, by serial and time or by time and serial. Those of one unit and second
/// are put into order here.
void read(Database& database, const QString& clause, const QVariantList& values,
          const attemptreader::Visit& visit)
{
    const Transaction transaction(database, Database::Access::Read);
    QHash<int, StationRow> stations;
    for (const StationRow& row : StationRows::stations(database))
        stations.insert(row.id.toInt(), row);
    std::vector<Attempt> second;
    const auto finishSecond = [&] {
        std::sort(second.begin(), second.end(), attemptrules::isBefore);
        std::for_each(second.begin(), second.end(), visit);
        second.clear();
    };
    Statement select(database,
                     "SELECT station_id, {bytes serial}, tested_at, marks FROM attempts " + clause);
    select.run(values);
    while (select.next()) {
        const StationRow& station = stations[select.number(0)];
        const QString serial = select.text(1);
        const Attempt attempt{station.name, station.tests18, serial, select.plainText(2),
                              select.marks(3, serial)};
        if (!second.empty() && (second.front().serial != attempt.serial ||
                                second.front().testedAt != attempt.testedAt))
            finishSecond();
        second.push_back(attempt);
    }
    finishSecond();
}
} // namespace

void attemptreader::forEachByUnit(Database& database, const Visit& visit)
{
    read(database, "ORDER BY serial {bytewise}, tested_at {bytewise}", {}, visit);
}

void attemptreader::forEachOf(Database& database, const QString& serial, const Visit& visit)
{
    read(database, "WHERE serial {bytewise} = {text ?} ORDER BY tested_at {bytewise}",
         {serial.toUtf8()}, visit);
}

void attemptreader::forEachByTime(Database& database, const Visit& visit)
{
    read(database, "ORDER BY tested_at {bytewise}, serial {bytewise}", {}, visit);
}

std::vector<StationNews> attemptreader::newestLogs(Database& database, const QDateTime& now)
{
    const Transaction transaction(database, Database::Access::Read);
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
    std::vector<StationNews> news;
    while (select.next())
        news.push_back({select.text(0), select.plainText(1)});
    return news;
}
