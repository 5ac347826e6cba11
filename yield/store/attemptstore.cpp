// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/attemptstore.h"

#include "yield/store/stationrows.h"
#include "yield/store/transaction.h"

#include <QDateTime>

#include <algorithm>

using attemptrules::Save;

namespace
{
/// Clocks of two computers differ by a little.
constexpr int futureSeconds = 600;

bool isIn(const std::vector<Save>& saves, const Save& save)
{
    return std::find(saves.begin(), saves.end(), save) != saves.end();
}

/// The row of the station with these logs, made or changed if need be.
StationRow updatedStation(Database& database, const Station& station,
                          const std::vector<StationLog>& logs)
{
    auto row = StationRows::findStation(database, station.name);
    if (!row) {
        Statement insert(database, "INSERT INTO stations (name) VALUES ({text_of ?})");
        insert.run({insert.valueOf(station.name)});
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
    const auto units = rows.find(serials);
    QMap<QString, std::vector<Save>> added;
    for (const StationLog& log : logs) {
        const Save save{log.testedAt, log.marks};
        const UnitLogs& unit = *units.constFind(log.serial);
        if (save.marks.none()) {
            ++counts.notAttempt;
        } else if (unit.hold(save) || isIn(added.value(log.serial), save)) {
            ++counts.known;
        } else {
            ++counts.added;
            counts.elsewhere += unit.holdElsewhere(save) ? 1 : 0;
            counts.future += save.testedAt > future ? 1 : 0;
            added[log.serial].push_back(save);
        }
    }
    for (auto unit = added.cbegin(); unit != added.cend(); ++unit)
        rows.group(unit.key(), *units.constFind(unit.key()), unit.value());
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
