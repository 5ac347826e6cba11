// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/stationrows.h"

#include "yield/store/database.h"

#include <algorithm>

using attemptrules::Save;

namespace
{
const QString ofUnits = " WHERE station_id = ? AND serial IN ({text_of ?}" +
                        QString(", {text_of ?}").repeated(StationRows::lookupSize - 1) + ")";
const QString oneLog =
    " WHERE station_id = ? AND serial = {text_of ?} AND tested_at = ? AND marks = ?";

bool holds(const std::vector<Save>& saves, const Save& save)
{
    return std::find(saves.begin(), saves.end(), save) != saves.end();
}
} // namespace

StationRows::StationRows(Database& usedDatabase, const QVariant& id, bool testsComponent18)
    : database(usedDatabase)
    , stationId(id)
    , tests18(testsComponent18)
    , findAttempts(database, "SELECT {bytes_of serial}, tested_at, marks FROM attempts" + ofUnits)
    , findOthers(database, "SELECT {bytes_of serial}, tested_at, marks FROM other_saves" + ofUnits)
    , insertAttempt(database, R"(
          INSERT INTO attempts (station_id, serial, tested_at, marks, complete)
          VALUES (?, {text_of ?}, ?, ?, ?))")
    , insertMissedBand(database, "INSERT INTO missed_bands VALUES (?, ?, ?)")
    , deleteAttempt(database, "DELETE FROM attempts" + oneLog)
    , insertOther(database, "INSERT INTO other_saves VALUES (?, {text_of ?}, ?, ?)")
    , deleteOther(database, "DELETE FROM other_saves" + oneLog)
{
}

QMap<QString, attemptrules::Attempts> StationRows::find(const QStringList& serials)
{
    QMap<QString, attemptrules::Attempts> units;
    for (const QString& serial : serials)
        units.insert(serial, {});
    find(findAttempts, serials,
         [&](const QString& serial, const Save& save) { units[serial].attempts.push_back(save); });
    find(findOthers, serials,
         [&](const QString& serial, const Save& save) { units[serial].others.push_back(save); });
    return units;
}

void StationRows::find(Statement& statement, const QStringList& serials,
                       const std::function<void(const QString&, const Save&)>& visit)
{
    QVariantList values{stationId};
    for (int i = 0; i < lookupSize; ++i)
        values << Statement::valueOf(serials[std::min(i, serials.size() - 1)]);
    statement.run(values);
    while (statement.next()) {
        const QString serial = statement.text(0);
        visit(serial, {statement.plainText(1), statement.marks(2, serial)});
    }
}

void StationRows::insert(const QString& serial, const Save& save)
{
    const auto missed = attemptrules::outcomeOf(save.marks, tests18).missed;
    insertAttempt.run({stationId, Statement::valueOf(serial), save.testedAt,
                       bandmarks::packed(save.marks), missed.empty() ? 1 : 0});
    if (missed.empty())
        return;
    const QVariant attemptId = insertAttempt.insertedId();
    for (const auto& band : missed)
        insertMissedBand.run({attemptId, band.componentNum, band.band});
}

void StationRows::change(const QString& serial, const attemptrules::Attempts& present,
                         const attemptrules::Attempts& wanted)
{
    const auto valuesOf = [&](const Save& save) {
        return QVariantList{stationId, Statement::valueOf(serial), save.testedAt,
                            bandmarks::packed(save.marks)};
    };
    for (const Save& save : present.attempts)
        if (!holds(wanted.attempts, save))
            deleteAttempt.run(valuesOf(save));
    for (const Save& save : present.others)
        if (!holds(wanted.others, save))
            deleteOther.run(valuesOf(save));
    for (const Save& save : wanted.attempts)
        if (!holds(present.attempts, save))
            insert(serial, save);
    for (const Save& save : wanted.others)
        if (!holds(present.others, save))
            insertOther.run(valuesOf(save));
}
