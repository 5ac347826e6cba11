// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/attemptstore.h"

#include "yield/logs/printabletext.h"
#include "yield/store/database.h"
#include "yield/store/stationrows.h"

#include <QDateTime>

#include <algorithm>

namespace
{
/// Clocks of two computers differ by a little.
constexpr int futureSeconds = 600;

bool contains(const std::vector<StationLog>& logs, const StationLog& log)
{
    return std::find(logs.begin(), logs.end(), log) != logs.end();
}

/// The row of the station with these logs, made or changed if need be.
StationRow updatedStation(Database& database, const Station& station,
                          const std::vector<StationLog>& logs)
{
    Statement(database, "INSERT INTO stations (name) VALUES ({text ?}) ON CONFLICT DO NOTHING")
        .run({station.name.toUtf8()});
    StationRow row = StationRows::stations(database)[station.name];
    // Marks of component 18 among the logs say that the station tests it.
    const bool isShown = std::any_of(logs.begin(), logs.end(), [](const StationLog& log) {
        return (log.marks & attemptrules::channelButtonMarks()).any();
    });
    if (!row.tests18 && (station.tests18 || isShown)) {
        Statement(database, "UPDATE stations SET tests_18 = 1 WHERE id = ?").run({row.id});
        row.tests18 = true;
        StationRows(database, row).writeAgain(); // every attempt missed it, or ended before it
    }
    return row;
}

/// Adds the logs that the station does not have yet.
StoreCounts add(StationRows& rows, const std::vector<StationLog>& logs)
{
    const QString future =
        QDateTime::currentDateTime().addSecs(futureSeconds).toString(Qt::ISODate);
    StoreCounts counts;
    for (const StationLog& log : logs) {
        UnitLogs unit = rows.find(log.serial);
        if (log.marks.none()) {
            ++counts.notAttempt;
        } else if (contains(unit.here, log)) {
            ++counts.known;
        } else {
            ++counts.added;
            counts.elsewhere += contains(unit.elsewhere, log) ? 1 : 0;
            counts.future += log.testedAt > future ? 1 : 0;
            if (!unit.here.empty())
                rows.remove(log.serial);
            unit.here.push_back(log);
            rows.write(unit.here);
        }
    }
    return counts;
}

/// Moves all logs of a station to another one.
void merge(Database& database, const StationRow& from, const StationRow& to)
{
    StationRows source(database, from);
    StationRows target(database, to);
    source.forEachUnit([&](const QString& serial, const UnitLogs& logs) {
        source.remove(serial);
        add(target, logs.here);
    });
    Statement(database, "DELETE FROM stations WHERE id = ?").run({from.id});
}

// How check names the rows of an attempt.
const QString attemptForm = "%1 complete %2, ended_at %3, missed_bands";
const QString bandForm = " %1:%2";

/// What the marks of a unit's logs come to.
QStringList wantedAttempts(const UnitLogs& logs, bool tests18)
{
    QStringList texts;
    for (const StationLog& attempt : attemptrules::attemptsOf(logs.here)) {
        const auto outcome = attemptrules::outcomeOf(attempt.marks, tests18);
        texts << attemptForm.arg(attempt.testedAt, outcome.hasPassed() ? "1" : "0",
                                 outcome.abortedAt ? QString::number(*outcome.abortedAt) : "");
        for (const auto& missed : outcome.missed)
            texts.last() += bandForm.arg(missed.componentNum).arg(missed.band);
    }
    return texts;
}

/// What the database has of a unit; select: its attempts, a row for each missed band.
QStringList presentAttempts(Statement& select)
{
    QMap<int, QString> texts; // by id
    while (select.next()) {
        QString& text = texts[select.number(0)];
        if (text.isEmpty())
            text = attemptForm.arg(select.value(1).toString(), select.value(2).toString(),
                                   select.value(3).toString());
        if (!select.value(4).isNull())
            text += bandForm.arg(select.number(4)).arg(select.number(5));
    }
    return texts.values();
}
} // namespace

StoreCounts& StoreCounts::operator+=(const StoreCounts& other)
{
    added += other.added;
    known += other.known;
    notAttempt += other.notAttempt;
    elsewhere += other.elsewhere;
    future += other.future;
    return *this;
}

StoreCounts attemptstore::store(Database& database, const Station& station,
                                const std::vector<StationLog>& logs)
{
    Transaction transaction(database, Database::Access::Write);
    StationRows rows(database, updatedStation(database, station, logs));
    const StoreCounts counts = add(rows, logs);
    transaction.commit();
    return counts;
}

void attemptstore::renameStation(Database& database, const QString& oldName, const QString& newName)
{
    Transaction transaction(database, Database::Access::Write);
    const auto stations = StationRows::stations(database);
    if (!stations.contains(oldName))
        throw DatabaseError(DatabaseError::Kind::Unusable,
                            QString("no station is named \"%1\"").arg(printableText(oldName)));
    const StationRow from = stations[oldName];
    if (!stations.contains(newName))
        Statement(database, "UPDATE stations SET name = {text ?} WHERE id = ?")
            .run({newName.toUtf8(), from.id});
    else if (newName != oldName)
        merge(database, from, updatedStation(database, {newName, from.tests18}, {}));
    transaction.commit();
}

int attemptstore::check(Database& database, const std::function<void(const QString&)>& say)
{
    const Transaction transaction(database, Database::Access::Read);
    Statement select(database, R"(
        SELECT id, tested_at, complete, coalesce(CAST(ended_at AS TEXT), ''), component, band
        FROM attempts LEFT JOIN missed_bands ON attempt_id = id
        WHERE station_id = ? AND serial = {text ?}
        ORDER BY component, band)");
    int differences = 0;
    for (const StationRow& station : StationRows::stations(database))
        StationRows(database, station)
            .forEachUnit([&](const QString& serial, const UnitLogs& logs) {
                select.run({station.id, serial.toUtf8()});
                const QString present = presentAttempts(select).join(" | ");
                const QString wanted = wantedAttempts(logs, station.tests18).join(" | ");
                if (present == wanted)
                    return;
                ++differences;
                say(QString("station \"%1\", serial \"%2\": its rows say \"%3\", "
                            "its marks \"%4\"")
                        .arg(printableText(station.name), printableText(serial), present, wanted));
            });
    return differences;
}
