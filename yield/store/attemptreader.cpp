// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/attemptreader.h"

#include "yield/logs/attemptrules.h"
#include "yield/store/stationrows.h"
#include "yield/store/transaction.h"

#include <QHash>
#include <QMap>

#include <algorithm>

namespace
{
class Reader
{
public:
    explicit Reader(Database& database)
        : connection(database)
        , transaction(database, Database::Access::Read)
    {
        for (const StationRow& row : StationRows::stations(database))
            stations.insert(row.id.toInt(), row);
    }

    bool isVersion1() const { return transaction.schemaVersion() == 1; }

    /// rows: a table or a query, what is read of it and in which order; texts: its values.
    void read(const QString& rows, const QStringList& texts, const attemptreader::Visit& visit)
    {
        Statement select(connection,
                         "SELECT station_id, {bytes_of serial}, tested_at, marks FROM " + rows);
        QVariantList values;
        for (const QString& text : texts)
            values << select.valueOf(text);
        if (values.isEmpty())
            select.run();
        else
            select.run(values);
        while (select.next()) {
            const StationRow& station = stations[select.number(0)];
            const QString serial = select.text(1);
            visit({station.name, station.tests18, serial, select.plainText(2),
                   select.marks(3, serial)});
        }
    }

private:
    Database& connection;
    Transaction transaction;
    QHash<int, StationRow> stations; ///< By id.
};

/// Puts the attempts of each unit, which come by serial, into order.
class UnitSorter
{
public:
    UnitSorter(bool areLogs, const attemptreader::Visit& sortedVisit)
        : groups(areLogs)
        , visit(sortedVisit)
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
        if (groups)
            group();
        std::sort(unit.begin(), unit.end(), attemptrules::isBefore);
        std::for_each(unit.begin(), unit.end(), visit);
        unit.clear();
    }

private:
    /// All logs of the unit become its attempts.
    void group()
    {
        QMap<QString, std::vector<attemptrules::Save>> saves;
        QMap<QString, Attempt> of;
        for (const Attempt& log : unit) {
            saves[log.station].push_back({log.testedAt, log.marks});
            of[log.station] = log;
        }
        unit.clear();
        for (auto station = saves.cbegin(); station != saves.cend(); ++station)
            for (const auto& save : attemptrules::grouped(station.value()).attempts) {
                Attempt attempt = of[station.key()];
                attempt.testedAt = save.testedAt;
                attempt.marks = save.marks;
                unit.push_back(attempt);
            }
    }

    const bool groups;
    const attemptreader::Visit& visit;
    std::vector<Attempt> unit;
};

/// Version 1 grouped by other rules, so all of its logs are read and grouped anew.
const QString logsOfVersion1 = R"((
    SELECT station_id, serial, tested_at, marks FROM attempts
    UNION ALL
    SELECT station_id, serial, tested_at, marks FROM other_saves) AS logs)";

void readUnits(Database& database, const QString& clause, const QStringList& texts,
               const attemptreader::Visit& visit)
{
    Reader reader(database);
    UnitSorter sorter(reader.isVersion1(), visit);
    reader.read((reader.isVersion1() ? logsOfVersion1 : "attempts") + clause, texts,
                [&](const Attempt& attempt) { sorter.add(attempt); });
    sorter.finishUnit();
}

bool isEarlier(const Attempt& left, const Attempt& right)
{
    if (left.testedAt != right.testedAt)
        return left.testedAt < right.testedAt;
    if (left.serial != right.serial)
        return left.serial.toUtf8() < right.serial.toUtf8();
    return attemptrules::isBefore(left, right);
}
} // namespace

void attemptreader::forEachByUnit(Database& database, const Visit& visit)
{
    readUnits(database, " ORDER BY {by_bytes serial}, {by_bytes tested_at}", {}, visit);
}

void attemptreader::forEachOf(Database& database, const QString& serial, const Visit& visit)
{
    readUnits(database, " WHERE {by_bytes serial} = {text_of ?}", {serial}, visit);
}

void attemptreader::forEachByTime(Database& database, const Visit& visit)
{
    Reader reader(database);
    // Those of one second are put into order here, as those of one unit are.
    std::vector<Attempt> second;
    const auto finish = [&] {
        std::sort(second.begin(), second.end(), isEarlier);
        std::for_each(second.begin(), second.end(), visit);
        second.clear();
    };
    reader.read("attempts ORDER BY {by_bytes tested_at}", {}, [&](const Attempt& attempt) {
        if (!second.empty() && second.front().testedAt != attempt.testedAt)
            finish();
        second.push_back(attempt);
    });
    finish();
}

std::vector<StationNews> attemptreader::newestLogs(Database& database, const QDateTime& now)
{
    Transaction transaction(database, Database::Access::Read);
    Statement select(database,
                     QString(R"(
        SELECT {bytes_of name}, max(newest)
        FROM stations LEFT JOIN
            (SELECT station_id, max(tested_at) AS newest
             FROM attempts
             WHERE tested_at <= ?
             GROUP BY station_id
             UNION ALL
             SELECT station_id, max(tested_at)
             FROM %1
             WHERE tested_at <= ?
             GROUP BY station_id) AS logs ON station_id = id
        GROUP BY name
        ORDER BY {by_bytes name})")
                         .arg(transaction.schemaVersion() == 1 ? "other_saves" : "repeated_saves"));
    const QString latest = now.toString(Qt::ISODate);
    select.run({latest, latest});
    std::vector<StationNews> news;
    while (select.next())
        news.push_back({select.text(0), select.plainText(1)});
    return news;
}
