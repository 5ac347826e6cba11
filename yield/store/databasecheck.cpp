// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/printabletext.h"
#include "yield/store/attemptstore.h"
#include "yield/store/database.h"
#include "yield/store/stationrows.h"

#include <utility>

namespace
{
/// What is told of the attempts at one unit, by time and marks.
using Facts = QMap<std::pair<QString, QByteArray>, QString>;

const QString noAttempt = "no attempt";

QString factsOf(bool isComplete, const QString& endedAt)
{
    return QString("complete %1, ended_at %2, missed_bands").arg(isComplete ? 1 : 0).arg(endedAt);
}

QString bandText(int componentNum, int band)
{
    return QString(" %1:%2").arg(componentNum).arg(band);
}

Facts wantedFacts(const UnitLogs& logs, bool tests18)
{
    Facts facts;
    for (const auto& attempt : attemptrules::grouped(logs.here).attempts) {
        const auto outcome = attemptrules::outcomeOf(attempt.marks, tests18);
        QString text = factsOf(outcome.isComplete(),
                               outcome.endedAt ? QString::number(*outcome.endedAt) : QString());
        for (const auto& band : outcome.missed)
            text += bandText(band.componentNum, band.band);
        facts[{attempt.testedAt, bandmarks::packed(attempt.marks)}] = text;
    }
    return facts;
}

/// select: finds the rows of a unit.
Facts presentFacts(Statement& select)
{
    Facts facts;
    while (select.next()) {
        QString& text = facts[{select.plainText(0), select.value(1).toByteArray()}];
        if (text.isEmpty())
            text = factsOf(select.number(2) != 0, select.plainText(3));
        if (!select.value(4).isNull())
            text += bandText(select.number(4), select.number(5));
    }
    return facts;
}

int countStrayBands(Database& database)
{
    Statement count(database, R"(
        SELECT count(*)
        FROM missed_bands
        WHERE NOT EXISTS (SELECT 1 FROM attempts WHERE id = attempt_id))");
    count.run();
    count.next();
    return count.number(0);
}
} // namespace

int attemptstore::check(Database& database, const std::function<void(const QString&)>& say)
{
    const Transaction transaction(database, Database::Access::Read);
    int differences = 0;
    Statement select(database, R"(
        SELECT tested_at, marks, complete, ended_at, component, band
        FROM attempts LEFT JOIN missed_bands ON attempt_id = id
        WHERE station_id = ? AND serial = {text ?}
        ORDER BY component, band)");
    for (const StationRow& station : StationRows::stations(database))
        StationRows(database, station)
            .forEachUnit([&](const QString& serial, const UnitLogs& logs) {
                select.run({station.id, serial.toUtf8()});
                const Facts present = presentFacts(select);
                const Facts wanted = wantedFacts(logs, station.tests18);
                Facts both = present;
                both.insert(wanted);
                for (const auto& attempt : both.keys()) {
                    const QString has = present.value(attempt, noAttempt);
                    const QString means = wanted.value(attempt, noAttempt);
                    if (has == means)
                        continue;
                    ++differences;
                    say(QString("station \"%1\", serial \"%2\", %3: %4; by the marks: %5")
                            .arg(printableText(station.name), printableText(serial), attempt.first,
                                 has, means));
                }
            });
    if (const int strays = countStrayBands(database); strays > 0) {
        ++differences;
        say(QString("%1 missed bands of no attempt").arg(strays));
    }
    return differences;
}
