// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/attemptstore.h"

#include "yield/store/stationrows.h"
#include "yield/store/transaction.h"

#include <algorithm>

using attemptrules::Save;

namespace
{
bool holds(const std::vector<Save>& saves, const Save& save)
{
    return std::find(saves.begin(), saves.end(), save) != saves.end();
}

struct StationRow {
    QVariant id;
    bool tests18 = false;
};

StationRow findStation(Database& database, const QString& name)
{
    Statement find(database, "SELECT id, tests_18 FROM stations WHERE name = {text_of ?}");
    find.run({Statement::valueOf(name)});
    if (!find.next()) {
        Statement(database, "INSERT INTO stations (name) VALUES ({text_of ?})")
            .run({Statement::valueOf(name)});
        return findStation(database, name);
    }
    return {find.value(0), find.number(1) != 0};
}

/// No attempt of the station has a mark of component 18 yet, so each missed both bands.
void beginToTest18(Database& database, const QVariant& stationId)
{
    Statement(database, "UPDATE stations SET tests_18 = 1 WHERE id = ?").run({stationId});
    Statement(database, "UPDATE attempts SET complete = 0 WHERE station_id = ?").run({stationId});
    Statement miss(database, R"(
        INSERT INTO missed_bands
        SELECT id, CAST(? AS INTEGER), CAST(? AS INTEGER)
        FROM attempts
        WHERE station_id = ?)");
    for (int band = 0; band < bandmarks::bandCount(roster::channelButton); ++band)
        miss.run({roster::channelButton, band, stationId});
}

/// As many logs as StationRows looks up at most.
void storePart(StationRows& rows, const std::vector<StationLog>& logs, StoreCounts& counts)
{
    QStringList serials;
    for (const StationLog& log : logs)
        serials << log.serial;
    const auto present = rows.find(serials);
    QMap<QString, std::vector<Save>> added;
    for (const StationLog& log : logs) {
        const Save save{log.testedAt, log.marks};
        const auto unit = present.value(log.serial);
        if (!attemptrules::isAttempt(save.marks)) {
            ++counts.notAttempt;
        } else if (holds(unit.attempts, save) || holds(unit.others, save) ||
                   holds(added.value(log.serial), save)) {
            ++counts.known;
        } else {
            ++counts.added;
            added[log.serial].push_back(save);
        }
    }
    for (auto unit = added.cbegin(); unit != added.cend(); ++unit) {
        const auto before = present.value(unit.key());
        std::vector<Save> all = unit.value();
        all.insert(all.end(), before.attempts.begin(), before.attempts.end());
        all.insert(all.end(), before.others.begin(), before.others.end());
        rows.change(unit.key(), before, attemptrules::grouped(all));
    }
}
} // namespace

StoreCounts& StoreCounts::operator+=(const StoreCounts& other)
{
    added += other.added;
    known += other.known;
    notAttempt += other.notAttempt;
    return *this;
}

StoreCounts attemptstore::store(Database& database, const Station& station,
                                const std::vector<StationLog>& logs)
{
    Transaction transaction(database, Database::Access::Write);
    StationRow row = findStation(database, station.name);
    // Marks of component 18 among the logs say that the station tests it.
    const bool isShown = std::any_of(logs.begin(), logs.end(), [](const StationLog& log) {
        return attemptrules::showsComponent18(log.marks);
    });
    if (!row.tests18 && (station.tests18 || isShown)) {
        beginToTest18(database, row.id);
        row.tests18 = true;
    }
    StationRows rows(database, row.id, row.tests18);
    StoreCounts counts;
    for (auto begin = logs.begin(); begin != logs.end();) {
        const auto size = std::min<std::ptrdiff_t>(StationRows::lookupSize, logs.end() - begin);
        storePart(rows, {begin, begin + size}, counts);
        begin += size;
    }
    transaction.commit();
    return counts;
}
