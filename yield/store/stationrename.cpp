// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/stationrename.h"

#include "yield/logs/printabletext.h"
#include "yield/store/stationrows.h"
#include "yield/store/transaction.h"

namespace
{
/// Moves all logs of a station to another one.
void merge(Database& database, const StationRow& from, const StationRow& to)
{
    StationRows source(database, from);
    StationRows target(database, to);
    source.forEachUnit([&](const QString& serial, const UnitLogs& logs) {
        const UnitLogs present = target.find({serial}).value(serial);
        std::vector<attemptrules::Save> added;
        for (const auto& save : logs.all())
            if (!present.hold(save))
                added.push_back(save);
        target.group(serial, present, added);
        source.remove(serial, logs);
    });
    Statement(database, "DELETE FROM stations WHERE id = ?").run({from.id});
}
} // namespace

void stationrename::rename(Database& database, const QString& oldName, const QString& newName)
{
    Transaction transaction(database, Database::Access::Write);
    const auto from = StationRows::findStation(database, oldName);
    auto to = StationRows::findStation(database, newName);
    if (!from)
        throw DatabaseError(DatabaseError::Kind::Unusable,
                            QString("no station is named \"%1\"").arg(printableText(oldName)));
    if (!to) {
        Statement update(database, "UPDATE stations SET name = {text_of ?} WHERE id = ?");
        update.run({update.valueOf(newName), from->id});
    } else if (to->id != from->id) {
        if (from->tests18 && !to->tests18)
            StationRows::beginToTest18(database, *to);
        merge(database, *from, *to);
    }
    transaction.commit();
}
