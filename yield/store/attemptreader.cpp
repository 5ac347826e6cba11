// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/attemptreader.h"

#include "yield/store/database.h"
#include "yield/store/schema.h"

#include <QHash>

#include <algorithm>

void attemptreader::forEachByUnit(Database& database, const Visit& visit,
                                  const std::optional<QString>& serial)
{
    const Transaction transaction(database, Database::Access::Read);
    schema::requireCurrent(database);
    QHash<int, QString> stations;
    Statement names(database, "SELECT id, {name} FROM stations");
    while (names.next())
        stations[names.number(0)] = names.text(1);
    // SQL returns them by serial and time; those of one unit and second are sorted afterwards.
    std::vector<Attempt> second;
    const auto finishSecond = [&] {
        std::sort(second.begin(), second.end(), attemptrules::isBefore);
        std::for_each(second.begin(), second.end(), visit);
        second.clear();
    };
    Statement select(database,
                     QString("SELECT station_id, {serial}, tested_at, marks, tests_18, started_at "
                             "FROM attempts %1 ORDER BY serial {bytewise}, tested_at {bytewise}")
                         .arg(serial ? "WHERE serial {bytewise} = {text}" : ""),
                     serial ? QVariantList{serial->toUtf8()} : QVariantList());
    while (select.next()) {
        const QString unit = select.text(1);
        const Attempt attempt{
            stations[select.number(0)], select.number(4) != 0, unit,
            select.value(2).toString(), select.marks(3, unit), select.value(5).toString()};
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
