// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/attemptreader.h"

#include "yield/logs/attemptrules.h"
#include "yield/store/database.h"
#include "yield/store/schema.h"
#include "yield/store/sqldialect.h"
#include "yield/store/statement.h"

#include <QHash>

#include <algorithm>

void attemptreader::forEachByUnit(Database& database, const Visit& visit,
                                  const std::optional<QString>& serial)
{
    const Transaction transaction(database, Database::Access::Read);
    schema::requireCurrent(database);
    const SqlDialect& dialect = database.sqlDialect();
    QHash<int, QString> stations;
    Statement names(database, "SELECT id, " + dialect.utf8Of("name") + " FROM stations");
    for (names.run(); names.next();)
        stations[names.number(0)] = names.text(1);
    // SQL returns them by serial and time; those of one unit and second are sorted afterwards.
    std::vector<Attempt> second;
    const auto finishSecond = [&] {
        std::sort(second.begin(), second.end(), attemptrules::isBefore);
        std::for_each(second.begin(), second.end(), visit);
        second.clear();
    };
    const QString condition =
        serial ? QString("WHERE serial %1 = %2").arg(dialect.bytewise, dialect.textParameter) : "";
    Statement select(database,
                     QString("SELECT station_id, %1, tested_at, marks, tests_18, started_at "
                             "FROM attempts %2 ORDER BY serial %3, tested_at %3")
                         .arg(dialect.utf8Of("serial"), condition, dialect.bytewise));
    select.run(serial ? QVariantList{serial->toUtf8()} : QVariantList());
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
    const SqlDialect& dialect = database.sqlDialect();
    const QString last = QString("(SELECT tested_at FROM %2 WHERE station_id = stations.id "
                                 "AND tested_at %1 <= ? ORDER BY tested_at %1 DESC LIMIT 1)")
                             .arg(dialect.bytewise);
    Statement select(database, QString("SELECT %1, %2, %3 FROM stations ORDER BY name %4")
                                   .arg(dialect.utf8Of("name"), last.arg("attempts"),
                                        last.arg("repeated_saves"), dialect.bytewise));
    select.run({now.toString(Qt::ISODate), now.toString(Qt::ISODate)});
    std::vector<LastLog> logs;
    while (select.next())
        logs.push_back(
            {select.text(0), std::max(select.value(1).toString(), select.value(2).toString())});
    return logs;
}
