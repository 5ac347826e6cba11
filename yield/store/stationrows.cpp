// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/stationrows.h"

#include <algorithm>

using attemptrules::Save;

namespace
{
const QString logsOfUnits = "SELECT station_id, {bytes serial}, tested_at, marks FROM %1 "
                            "WHERE serial {bytewise} IN ({text ?}" +
                            QString(", {text ?}").repeated(StationRows::lookupSize - 1) + ")";
const QString ofUnit = " WHERE station_id = ? AND serial = {text ?}";
} // namespace

bool contains(const std::vector<Save>& saves, const Save& save)
{
    return std::find(saves.begin(), saves.end(), save) != saves.end();
}

StationRows::StationRows(Database& usedDatabase, const StationRow& row)
    : database(usedDatabase)
    , station(row)
    , findLogs(database,
               logsOfUnits.arg("attempts") + " UNION ALL " + logsOfUnits.arg("repeated_saves"))
    , insertAttempt(database, R"(
          INSERT INTO attempts (station_id, serial, tested_at, marks, complete, ended_at)
          VALUES (?, {text ?}, ?, ?, ?, ?))")
    , insertMissedBand(database, "INSERT INTO missed_bands VALUES (?, ?, ?)")
    , insertRepeated(database, "INSERT INTO repeated_saves VALUES (?, {text ?}, ?, ?)")
    , deleteAttempts(database, "DELETE FROM attempts" + ofUnit)
    , deleteRepeated(database, "DELETE FROM repeated_saves" + ofUnit)
{
}

std::vector<StationRow> StationRows::stations(Database& database)
{
    Statement select(database, "SELECT id, {bytes name}, tests_18 FROM stations ORDER BY id");
    select.run();
    std::vector<StationRow> rows;
    while (select.next())
        rows.push_back({select.value(0), select.text(1), select.number(2) != 0});
    return rows;
}

std::optional<StationRow> StationRows::findStation(Database& database, const QString& name)
{
    for (const StationRow& row : stations(database))
        if (row.name == name)
            return row;
    return std::nullopt;
}

void StationRows::beginToTest18(Database& database, StationRow& station)
{
    Statement(database, "UPDATE stations SET tests_18 = 1 WHERE id = ?").run({station.id});
    station.tests18 = true;
    StationRows(database, station).writeAgain();
}

QMap<QString, UnitLogs> StationRows::find(const QStringList& serials)
{
    QMap<QString, UnitLogs> units;
    for (const QString& serial : serials)
        units.insert(serial, {});
    QVariantList values;
    for (int i = 0; i < 2 * lookupSize; ++i)
        values << serials[std::min(i % lookupSize, serials.size() - 1)].toUtf8();
    findLogs.run(values);
    while (findLogs.next()) {
        const QString serial = findLogs.text(1);
        const Save save{findLogs.plainText(2), findLogs.marks(3, serial)};
        UnitLogs& unit = units[serial];
        const bool isHere = findLogs.value(0) == station.id;
        (isHere ? unit.here : unit.elsewhere).push_back(save);
        unit.hasRows = unit.hasRows || isHere;
    }
    return units;
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
    for (int begin = 0; begin < serials.size(); begin += lookupSize) {
        const auto units = find(serials.mid(begin, lookupSize));
        for (auto unit = units.cbegin(); unit != units.cend(); ++unit)
            visit(unit.key(), unit.value());
    }
}

void StationRows::write(const QString& serial, const UnitLogs& logs)
{
    const QByteArray text = serial.toUtf8();
    if (logs.hasRows) {
        deleteAttempts.run({station.id, text});
        deleteRepeated.run({station.id, text});
    }
    const auto grouped = attemptrules::grouped(logs.here);
    for (const Save& save : grouped.attempts)
        insert(text, save);
    for (const Save& save : grouped.others)
        insertRepeated.run({station.id, text, save.testedAt, bandmarks::packed(save.marks)});
}

void StationRows::writeAgain()
{
    forEachUnit([this](const QString& serial, const UnitLogs& logs) { write(serial, logs); });
}

void StationRows::insert(const QByteArray& serial, const Save& save)
{
    const auto outcome = attemptrules::outcomeOf(save.marks, station.tests18);
    insertAttempt.run({station.id, serial, save.testedAt, bandmarks::packed(save.marks),
                       outcome.isComplete() ? 1 : 0,
                       outcome.endedAt ? QVariant(*outcome.endedAt) : QVariant(QVariant::Int)});
    if (outcome.missed.empty())
        return;
    const QVariant attemptId = insertAttempt.insertedId();
    for (const auto& band : outcome.missed)
        insertMissedBand.run({attemptId, band.componentNum, band.band});
}
