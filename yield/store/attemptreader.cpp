// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/attemptreader.h"

#include "yield/store/database.h"
#include "yield/store/schema.h"

#include <QHash>

#include <algorithm>

void attemptreader::forEachUnit(Database& database, const Visit& visit,
                                const std::optional<QString>& serial)
{
    const Transaction transaction(database, Database::Access::Read);
    schema::requireCurrent(database);
    QHash<int, QString> stations;
    Statement names(database, "SELECT id, {name} FROM stations");
    while (names.next())
        stations[names.number(0)] = names.text(1);
    std::vector<Attempt> unit;
    const auto finishUnit = [&] {
        std::sort(unit.begin(), unit.end(), attemptrules::isBefore);
        if (!unit.empty())
            visit(unit);
        unit.clear();
    };
    Statement select(database,
                     QString("SELECT station_id, {serial}, tested_at, marks, tests_18, started_at "
                             "FROM attempts %1 ORDER BY serial {bytewise}")
                         .arg(serial ? "WHERE serial {bytewise} = {text}" : ""),
                     serial ? QVariantList{serial->toUtf8()} : QVariantList());
    while (select.next()) {
        const QString unitSerial = select.text(1);
        if (!unit.empty() && unit.front().serial != unitSerial)
            finishUnit();
        unit.push_back({stations[select.number(0)], select.number(4) != 0, unitSerial,
                        select.value(2).toString(), select.marks(3, unitSerial),
                        select.value(5).toString()});
    }
    finishUnit();
}

std::vector<LastLog> attemptreader::lastLogs(Database& database, const QDateTime& now)
{
    const Transaction transaction(database, Database::Access::Read);
    schema::requireCurrent(database);
    const QString last =
        "(SELECT tested_at FROM %1 WHERE station_id = stations.id "
        "AND tested_at {bytewise} <= ? ORDER BY tested_at {bytewise} DESC LIMIT 1)";
    Statement select(database,
                     QString("SELECT {name}, %1, %2 FROM stations ORDER BY name {bytewise}")
                         .arg(last.arg("attempts"), last.arg("repeated_saves")),
                     {now.toString(Qt::ISODate), now.toString(Qt::ISODate)});
    std::vector<LastLog> logs;
    while (select.next())
        logs.push_back(
            {select.text(0), std::max(select.value(1).toString(), select.value(2).toString())});
    return logs;
}
