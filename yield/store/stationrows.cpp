// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/stationrows.h"

#include <algorithm>

using attemptrules::Save;

namespace
{
const QString ofUnits = " WHERE {by_bytes serial} IN ({text_of ?}" +
                        QString(", {text_of ?}").repeated(StationRows::lookupSize - 1) + ")";
const QString oneLog =
    " WHERE station_id = ? AND serial = {text_of ?} AND tested_at = ? AND marks = ?";

bool contains(const std::vector<Save>& saves, const Save& save)
{
    return std::find(saves.begin(), saves.end(), save) != saves.end();
}

StationRow stationOf(const Statement& statement)
{
    return {statement.value(0), statement.text(1), statement.number(2) != 0};
}
} // namespace

std::vector<Save> UnitLogs::all() const
{
    std::vector<Save> saves = grouped.attempts;
    saves.insert(saves.end(), grouped.others.begin(), grouped.others.end());
    return saves;
}

bool UnitLogs::hold(const Save& save) const
{
    return contains(grouped.attempts, save) || contains(grouped.others, save);
}

bool UnitLogs::holdElsewhere(const Save& save) const
{
    return contains(elsewhere, save);
}

StationRows::StationRows(Database& usedDatabase, const StationRow& row)
    : database(usedDatabase)
    , station(row)
    , findAttempts(database, R"(
          SELECT station_id, {bytes_of serial}, tested_at, marks
          FROM attempts)" + ofUnits)
    , findRepeated(database, R"(
          SELECT station_id, {bytes_of serial}, tested_at, marks
          FROM repeated_saves)" + ofUnits)
    , insertAttempt(database, R"(
          INSERT INTO attempts (station_id, serial, tested_at, marks, complete, ended_at)
          VALUES (?, {text_of ?}, ?, ?, ?, ?))")
    , insertMissedBand(database, "INSERT INTO missed_bands VALUES (?, ?, ?)")
    , deleteAttempt(database, "DELETE FROM attempts" + oneLog)
    , insertRepeated(database, "INSERT INTO repeated_saves VALUES (?, {text_of ?}, ?, ?)")
    , deleteRepeated(database, "DELETE FROM repeated_saves" + oneLog)
{
}

std::vector<StationRow> StationRows::stations(Database& database)
{
    Statement select(database, "SELECT id, {bytes_of name}, tests_18 FROM stations ORDER BY id");
    select.run();
    std::vector<StationRow> rows;
    while (select.next())
        rows.push_back(stationOf(select));
    return rows;
}

std::optional<StationRow> StationRows::findStation(Database& database, const QString& name)
{
    Statement select(database, R"(
        SELECT id, {bytes_of name}, tests_18
        FROM stations
        WHERE name = {text_of ?})");
    select.run({select.valueOf(name)});
    if (!select.next())
        return std::nullopt;
    return stationOf(select);
}

void StationRows::beginToTest18(Database& database, StationRow& station)
{
    Statement(database, "UPDATE stations SET tests_18 = 1 WHERE id = ?").run({station.id});
    station.tests18 = true;
    StationRows rows(database, station);
    rows.forEachUnit(
        [&](const QString& serial, const UnitLogs& logs) { rows.writeAgain(serial, logs); });
}

QMap<QString, UnitLogs> StationRows::find(const QStringList& serials)
{
    QMap<QString, UnitLogs> units;
    QVariantList values;
    for (int i = 0; i < lookupSize; ++i)
        values << findAttempts.valueOf(serials[std::min(i, serials.size() - 1)]);
    for (const QString& serial : serials)
        units.insert(serial, {});
    for (Statement* const statement : {&findAttempts, &findRepeated}) {
        statement->run(values);
        while (statement->next()) {
            const QString serial = statement->text(1);
            const Save save{statement->plainText(2), statement->marks(3, serial)};
            UnitLogs& unit = units[serial];
            if (statement->value(0) != station.id)
                unit.elsewhere.push_back(save);
            else if (statement == &findAttempts)
                unit.grouped.attempts.push_back(save);
            else
                unit.grouped.others.push_back(save);
        }
    }
    return units;
}

QStringList StationRows::serialsAfter(const std::optional<QString>& serial)
{
    Statement select(database, QString(R"(
        SELECT {bytes_of serial}
        FROM attempts
        WHERE station_id = ? AND serial %1 {text_of ?}
        ORDER BY station_id, serial
        LIMIT ?)")
                                   .arg(serial ? ">" : ">=")); // the first may be empty
    select.run({station.id, select.valueOf(serial.value_or("")), lookupSize});
    QStringList serials;
    while (select.next())
        serials << select.text(0);
    serials.removeDuplicates();
    return serials;
}

void StationRows::forEachUnit(const Visit& visit)
{
    for (QStringList serials = serialsAfter({}); !serials.isEmpty();
         serials = serialsAfter(serials.last())) {
        const auto units = find(serials);
        for (auto unit = units.cbegin(); unit != units.cend(); ++unit)
            visit(unit.key(), unit.value());
    }
}

void StationRows::group(const QString& serial, const UnitLogs& present,
                        const std::vector<Save>& added)
{
    std::vector<Save> all = present.all();
    all.insert(all.end(), added.begin(), added.end());
    change(serial, present.grouped, attemptrules::grouped(all));
}

void StationRows::writeAgain(const QString& serial, const UnitLogs& present)
{
    remove(serial, present);
    change(serial, {}, attemptrules::grouped(present.all()));
}

void StationRows::remove(const QString& serial, const UnitLogs& present)
{
    change(serial, present.grouped, {});
}

void StationRows::change(const QString& serial, const attemptrules::Attempts& present,
                         const attemptrules::Attempts& wanted)
{
    const auto valuesOf = [&](const Save& save) {
        return QVariantList{station.id, insertAttempt.valueOf(serial), save.testedAt,
                            bandmarks::packed(save.marks)};
    };
    for (const Save& save : present.attempts)
        if (!contains(wanted.attempts, save))
            deleteAttempt.run(valuesOf(save));
    for (const Save& save : present.others)
        if (!contains(wanted.others, save))
            deleteRepeated.run(valuesOf(save));
    for (const Save& save : wanted.attempts)
        if (!contains(present.attempts, save))
            insert(serial, save);
    for (const Save& save : wanted.others)
        if (!contains(present.others, save))
            insertRepeated.run(valuesOf(save));
}

void StationRows::insert(const QString& serial, const Save& save)
{
    const auto outcome = attemptrules::outcomeOf(save.marks, station.tests18);
    insertAttempt.run({station.id, insertAttempt.valueOf(serial), save.testedAt,
                       bandmarks::packed(save.marks), outcome.isComplete() ? 1 : 0,
                       outcome.endedAt ? QVariant(*outcome.endedAt) : QVariant(QVariant::Int)});
    if (outcome.missed.empty())
        return;
    const QVariant attemptId = insertAttempt.insertedId();
    for (const auto& band : outcome.missed)
        insertMissedBand.run({attemptId, band.componentNum, band.band});
}
