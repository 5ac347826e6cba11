// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/attemptstore.h"

#include "yield/logs/printabletext.h"
#include "yield/store/database.h"
#include "yield/store/stationrows.h"

#include <QDateTime>
#include <QSet>

#include <algorithm>

using attemptrules::Save;

namespace
{
/// Clocks of two computers differ by a little.
constexpr int futureSeconds = 600;

/// The row of the station with these logs, made or changed if need be.
StationRow updatedStation(Database& database, const Station& station,
                          const std::vector<StationLog>& logs)
{
    auto row = StationRows::findStation(database, station.name);
    if (!row) {
        Statement(database, "INSERT INTO stations (name) VALUES ({text ?})")
            .run({station.name.toUtf8()});
        row = StationRows::findStation(database, station.name);
    }
    // Marks of component 18 among the logs say that the station tests it.
    const bool isShown = std::any_of(logs.begin(), logs.end(), [](const StationLog& log) {
        return attemptrules::showsComponent18(log.marks);
    });
    if (!row->tests18 && (station.tests18 || isShown))
        StationRows::beginToTest18(database, *row);
    return *row;
}

/// As many logs as StationRows looks up at most.
void storePart(StationRows& rows, const std::vector<StationLog>& logs, StoreCounts& counts)
{
    QStringList serials;
    for (const StationLog& log : logs)
        serials << log.serial;
    const QString future =
        QDateTime::currentDateTime().addSecs(futureSeconds).toString(Qt::ISODate);
    auto units = rows.find(serials);
    QSet<QString> changed;
    for (const StationLog& log : logs) {
        const Save save{log.testedAt, log.marks};
        UnitLogs& unit = units[log.serial];
        if (save.marks.none()) {
            ++counts.notAttempt;
        } else if (contains(unit.here, save)) {
            ++counts.known;
        } else {
            ++counts.added;
            counts.elsewhere += contains(unit.elsewhere, save) ? 1 : 0;
            counts.future += save.testedAt > future ? 1 : 0;
            unit.here.push_back(save);
            changed << log.serial;
        }
    }
    for (const QString& serial : qAsConst(changed))
        rows.write(serial, units[serial]);
}

/// Moves all logs of a station to another one.
void merge(Database& database, const StationRow& from, StationRow& to)
{
    if (from.tests18 && !to.tests18)
        StationRows::beginToTest18(database, to);
    StationRows source(database, from);
    StationRows target(database, to);
    source.forEachUnit([&](const QString& serial, const UnitLogs& logs) {
        UnitLogs both = target.find({serial}).value(serial);
        for (const Save& save : logs.here)
            if (!contains(both.here, save))
                both.here.push_back(save);
        target.write(serial, both);
        source.write(serial, {{}, {}, true});
    });
    Statement(database, "DELETE FROM stations WHERE id = ?").run({from.id});
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
    StoreCounts counts;
    for (auto begin = logs.begin(); begin != logs.end();) {
        const auto size = std::min<std::ptrdiff_t>(StationRows::lookupSize, logs.end() - begin);
        storePart(rows, {begin, begin + size}, counts);
        begin += size;
    }
    transaction.commit();
    return counts;
}

void attemptstore::renameStation(Database& database, const QString& oldName, const QString& newName)
{
    Transaction transaction(database, Database::Access::Write);
    const auto from = StationRows::findStation(database, oldName);
    auto to = StationRows::findStation(database, newName);
    if (!from)
        throw DatabaseError(DatabaseError::Kind::Unusable,
                            QString("no station is named \"%1\"").arg(printableText(oldName)));
    if (!to)
        Statement(database, "UPDATE stations SET name = {text ?} WHERE id = ?")
            .run({newName.toUtf8(), from->id});
    else if (to->id != from->id)
        merge(database, *from, *to);
    transaction.commit();
}
