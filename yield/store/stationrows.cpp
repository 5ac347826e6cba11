// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/stationrows.h"

#include "yield/logs/attemptrules.h"

#include <algorithm>

StationRows::StationRows(Database& usedDatabase, const StationRow& row)
    : database(usedDatabase)
    , station(row)
    , findLogs(database, R"(
          SELECT station_id, tested_at, marks FROM attempts WHERE serial {bytewise} = {text ?}
          UNION ALL
          SELECT station_id, tested_at, marks FROM repeated_saves WHERE serial {bytewise} = {text ?})")
    , insertAttempt(database, R"(
          INSERT INTO attempts (station_id, serial, tested_at, marks, complete, ended_at)
          VALUES (?, {text ?}, ?, ?, ?, ?))")
    , insertMissedBand(database, "INSERT INTO missed_bands VALUES (?, ?, ?)")
    , insertRepeated(database, "INSERT INTO repeated_saves VALUES (?, {text ?}, ?, ?)")
    , deleteAttempts(database, "DELETE FROM attempts WHERE station_id = ? AND serial = {text ?}")
    , deleteRepeated(database,
                     "DELETE FROM repeated_saves WHERE station_id = ? AND serial = {text ?}")
{
}

QMap<QString, StationRow> StationRows::stations(Database& database)
{
    Statement select(database, "SELECT id, {bytes name}, tests_18 FROM stations");
    select.run();
    QMap<QString, StationRow> rows;
    while (select.next())
        rows[select.text(1)] = {select.value(0), select.text(1), select.number(2) != 0};
    return rows;
}

UnitLogs StationRows::find(const QString& serial)
{
    UnitLogs logs;
    findLogs.run({serial.toUtf8(), serial.toUtf8()});
    while (findLogs.next()) {
        auto& place = findLogs.value(0) == station.id ? logs.here : logs.elsewhere;
        place.push_back({serial, findLogs.value(1).toString(), findLogs.marks(2, serial)});
    }
    return logs;
}

void StationRows::forEachUnit(const Visit& visit)
{
    Statement select(database, R"(
        SELECT {bytes serial} FROM attempts WHERE station_id = ?
        UNION
        SELECT {bytes serial} FROM repeated_saves WHERE station_id = ?)");
    select.run({station.id, station.id});
    QStringList serials;
    while (select.next())
        serials << select.text(0);
    for (const QString& serial : qAsConst(serials))
        visit(serial, find(serial));
}

void StationRows::remove(const QString& serial)
{
    deleteAttempts.run({station.id, serial.toUtf8()});
    deleteRepeated.run({station.id, serial.toUtf8()});
}

void StationRows::write(const std::vector<StationLog>& logs)
{
    const auto attempts = attemptrules::attemptsOf(logs);
    for (const StationLog& log : attempts) {
        const auto outcome = attemptrules::outcomeOf(log.marks, station.tests18);
        insertAttempt.run(
            {station.id, log.serial.toUtf8(), log.testedAt, bandmarks::packed(log.marks),
             outcome.hasPassed() ? 1 : 0,
             outcome.abortedAt ? QVariant(*outcome.abortedAt) : QVariant(QVariant::Int)});
        const QVariant id = outcome.missed.empty() ? QVariant() : insertAttempt.insertedId();
        for (const auto& missed : outcome.missed)
            insertMissedBand.run({id, missed.componentNum, missed.band});
    }
    for (const StationLog& log : logs)
        if (std::count(attempts.begin(), attempts.end(), log) == 0)
            insertRepeated.run(
                {station.id, log.serial.toUtf8(), log.testedAt, bandmarks::packed(log.marks)});
}

void StationRows::writeAgain()
{
    forEachUnit([this](const QString& serial, const UnitLogs& logs) {
        remove(serial);
        write(logs.here);
    });
}
