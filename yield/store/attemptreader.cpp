// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/attemptreader.h"

#include "yield/logs/attemptrules.h"
#include "yield/store/statement.h"
#include "yield/store/transaction.h"

#include <QHash>

#include <algorithm>

namespace
{
struct Station {
    QString name;
    bool tests18 = false;
};

class Reader
{
public:
    explicit Reader(Database& database)
        : connection(database)
        , transaction(database, Database::Access::Read)
    {
        Statement all(database, "SELECT id, {bytes_of name}, tests_18 FROM stations");
        all.run();
        while (all.next())
            stations.insert(all.number(0), {all.text(1), all.number(2) != 0});
    }

    /// clause: which attempts, in which order.
    void read(const QString& clause, const QVariantList& values, const attemptreader::Visit& visit)
    {
        Statement select(connection, "SELECT station_id, {bytes_of serial}, tested_at, marks "
                                     "FROM attempts " +
                                         clause);
        if (values.isEmpty())
            select.run();
        else
            select.run(values);
        while (select.next()) {
            const Station& station = stations[select.number(0)];
            const QString serial = select.text(1);
            visit({station.name, station.tests18, serial, select.plainText(2),
                   select.marks(3, serial)});
        }
    }

private:
    Database& connection;
    Transaction transaction;
    QHash<int, Station> stations; ///< By id.
};

/// Puts the attempts of each unit, which come by serial, into order.
class UnitSorter
{
public:
    explicit UnitSorter(const attemptreader::Visit& sortedVisit)
        : visit(sortedVisit)
    {
    }

    void add(const Attempt& attempt)
    {
        if (!unit.empty() && unit.front().serial != attempt.serial)
            finishUnit();
        unit.push_back(attempt);
    }

    void finishUnit()
    {
        std::sort(unit.begin(), unit.end(), attemptrules::isBefore);
        std::for_each(unit.begin(), unit.end(), visit);
        unit.clear();
    }

private:
    const attemptreader::Visit& visit;
    std::vector<Attempt> unit;
};

void readUnits(Database& database, const QString& clause, const QVariantList& values,
               const attemptreader::Visit& visit)
{
    UnitSorter sorter(visit);
    Reader(database).read(clause, values, [&](const Attempt& attempt) { sorter.add(attempt); });
    sorter.finishUnit();
}
} // namespace

void attemptreader::forEachByUnit(Database& database, const Visit& visit)
{
    readUnits(database, "ORDER BY {by_bytes serial}, {by_bytes tested_at}", {}, visit);
}

void attemptreader::forEachOf(Database& database, const QString& serial, const Visit& visit)
{
    readUnits(database, "WHERE {by_bytes serial} = {text_of ?}", {Statement::valueOf(serial)},
              visit);
}

void attemptreader::forEachByTime(Database& database, const Visit& visit)
{
    Reader(database).read(
        "JOIN stations ON stations.id = station_id "
        "ORDER BY {by_bytes tested_at}, {by_bytes serial}, {by_bytes name}, marks",
        {}, visit);
}

std::vector<StationNews> attemptreader::newestLogs(Database& database, const QDateTime& now)
{
    Transaction transaction(database, Database::Access::Read);
    Statement select(database, R"(
        SELECT {bytes_of name}, max(newest)
        FROM stations LEFT JOIN
            (SELECT station_id, max(tested_at) AS newest
             FROM attempts
             WHERE tested_at <= ?
             GROUP BY station_id
             UNION ALL
             SELECT station_id, max(tested_at)
             FROM repeated_saves
             WHERE tested_at <= ?
             GROUP BY station_id) AS logs ON station_id = id
        GROUP BY name
        ORDER BY {by_bytes name})");
    const QString latest = now.toString(Qt::ISODate);
    select.run({latest, latest});
    std::vector<StationNews> news;
    while (select.next())
        news.push_back({select.text(0), select.plainText(1)});
    return news;
}
