// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/attemptstore.h"

#include "yield/logs/attemptrules.h"
#include "yield/logs/printabletext.h"
#include "yield/store/attemptrows.h"
#include "yield/store/database.h"
#include "yield/store/schema.h"
#include "yield/store/sqldialect.h"

#include <QDateTime>

#include <algorithm>

namespace
{
/// Clocks of two computers differ by a little.
constexpr int futureSeconds = 600;

bool showsTest18(const LogFile& file)
{
    return (file.name && file.name->isTarvek) ||
           (file.log.marks & attemptrules::channelButtonMarks()).any();
}

/// From now on the station tests component 18, in its imported logs too: they do not show it.
void setTests18(Database& database, int stationId)
{
    Statement(database, "UPDATE stations SET tests_18 = 1 WHERE id = ?").run({stationId});
    const QString imported = QString("run IS NULL AND station_id = %1").arg(stationId);
    database.run("UPDATE attempts SET tests_18 = 1 WHERE " + imported);
    AttemptRows(database).deriveResults(imported);
}

/// The row of a station, inserted or changed if need be.
StationRow updatedStation(Database& database, const Station& station, bool showsTests18)
{
    const auto stations = AttemptRows::stations(database);
    StationRow row = stations.value(station.name);
    if (!stations.contains(station.name)) {
        Statement(database, QString("INSERT INTO stations (name) VALUES (%1)")
                                .arg(database.sqlDialect().textParameter))
            .run({station.name.toUtf8()});
        row = AttemptRows::stations(database)[station.name];
    }
    if ((station.tests18 || showsTests18) && !row.tests18) {
        setTests18(database, row.id);
        row.tests18 = true;
    }
    return row;
}

/// Stores the logs of one station.
class LogStore
{
public:
    LogStore(Database& database, const StationRow& row)
        : station(row)
        , rows(database)
    {
        const auto stations = AttemptRows::stations(database);
        for (const StationRow& known : stations)
            names[known.id] = known.name.toUtf8();
    }

    void add(const LogFile& file);

    StoreCounts counts;

private:
    /// What was known of a log before it was stored.
    struct Found {
        bool isKnown = false;
        bool isAtOtherStation = false;
    };

    Found addImported(const StationLog& log);
    Found addSave(LogRow save);
    QVariant olderAttempt(const QVariant& one, const QVariant& other);
    void writeRun(LogRow attempt, const std::optional<LogRow>& former);

    const StationRow station;
    AttemptRows rows;
    QMap<int, QByteArray> names; ///< Of the stations, in UTF-8.
    const QString future =
        QDateTime::currentDateTime().addSecs(futureSeconds).toString(Qt::ISODate);
};

void LogStore::add(const LogFile& file)
{
    if (file.log.marks.none()) {
        ++counts.empty;
        return;
    }
    const Found found = file.name
                            ? addSave({{}, station.id, file.log, file.name, showsTest18(file)})
                            : addImported(file.log);
    counts.duplicates += found.isKnown ? 1 : 0;
    counts.added += found.isKnown ? 0 : 1;
    counts.future += !found.isKnown && file.log.testedAt > future ? 1 : 0;
    counts.otherStations += found.isAtOtherStation ? 1 : 0;
}

/// A log without its run is an attempt, unless it is known: at this station, or with its run.
LogStore::Found LogStore::addImported(const StationLog& log)
{
    const auto known = rows.find(log);
    const auto isHere = [&](const LogRow& row) { return row.stationId == station.id; };
    const auto hasRun = [](const LogRow& row) { return row.save.has_value(); };
    const bool isKnownHere = std::any_of(known.begin(), known.end(), isHere);
    if (isKnownHere || std::any_of(known.begin(), known.end(), hasRun))
        return {true, !isKnownHere};
    rows.writeAttempt({{}, station.id, log, {}, station.tests18});
    return {false, !known.empty()};
}

/// Of the saves of a run, the highest is the attempt. Of a run that comes from several stations,
/// the station whose name is the lowest counts: that depends on no order.
LogStore::Found LogStore::addSave(LogRow save)
{
    const QString run = save.save->run;
    std::optional<LogRow> former; // the attempt of the run
    Found found;
    const auto known = rows.find(save.log, run);
    for (const LogRow& row : known)
        if (!row.attemptId.isNull() && row.save && row.save->run == run)
            former = row;
    if (former) {
        found.isAtOtherStation = former->stationId != save.stationId;
        if (names[former->stationId] < names[save.stationId])
            save.stationId = former->stationId;
        save.tests18 = save.tests18 || former->tests18;
        save.attemptId = former->attemptId;
    }
    for (const LogRow& row : known) {
        const bool isHere = row.stationId == save.stationId;
        if (row.save && row.save->run != run) {
            if (isHere) // two runs left the same log, within a second: one attempt
                return {true, found.isAtOtherStation};
            continue;
        }
        if (!(row.log == save.log))
            continue;
        found.isKnown = true;
        found.isAtOtherStation = found.isAtOtherStation || !isHere;
        if (row.save) // two saves within a second
            save.save->save = std::max(save.save->save, row.save->save);
        if (row.attemptId.isNull())
            rows.removeRepeated(row);
        else // an imported attempt gains its run
            save.attemptId = olderAttempt(save.attemptId, row.attemptId);
    }
    writeRun(save, former);
    return found;
}

/// Two attempts turn out to be one: removes the newer row, returns the older. The same row may be
/// given twice, one may be null.
QVariant LogStore::olderAttempt(const QVariant& one, const QVariant& other)
{
    if (one.isNull() || one == other)
        return other;
    const bool isOlder = one.toLongLong() < other.toLongLong();
    rows.removeAttempt(isOlder ? other : one);
    return isOlder ? one : other;
}

/// Writes a save of a run whose attempt was former.
void LogStore::writeRun(LogRow attempt, const std::optional<LogRow>& former)
{
    if (former && former->stationId != attempt.stationId)
        rows.moveRepeated(attempt.save->run, attempt.stationId);
    if (former && !(former->log == attempt.log)) {
        LogRow repeated = *former;
        repeated.stationId = attempt.stationId;
        if (attempt.save->save < former->save->save) {
            std::swap(repeated.log, attempt.log);
            std::swap(repeated.save, attempt.save);
        }
        rows.insertRepeated(repeated);
    }
    const bool isWritten = former && former->attemptId == attempt.attemptId &&
                           former->log == attempt.log && former->save->save == attempt.save->save &&
                           former->stationId == attempt.stationId &&
                           former->tests18 == attempt.tests18;
    if (!isWritten)
        rows.writeAttempt(attempt);
}

/// Moves all rows of a station to another one. Of a log that both have one row stays, that of
/// repeated_saves first.
void unite(Database& database, const StationRow& from, const StationRow& to)
{
    const QString remove =
        "DELETE FROM %1 WHERE station_id = %2 AND EXISTS (SELECT 1 FROM %3 AS other "
        "WHERE other.station_id = %4 AND other.serial = %1.serial "
        "AND other.tested_at = %1.tested_at AND other.marks = %1.marks)";
    const auto removeKnown = [&](const char* table, int station, const char* other,
                                 int otherStation) {
        database.run(remove.arg(table).arg(station).arg(other).arg(otherStation));
    };
    removeKnown("attempts", from.id, "repeated_saves", to.id);
    removeKnown("attempts", to.id, "repeated_saves", from.id);
    removeKnown("attempts", from.id, "attempts", to.id);
    removeKnown("repeated_saves", from.id, "repeated_saves", to.id);
    for (const char* table : {"attempts", "repeated_saves"})
        Statement(database, QString("UPDATE %1 SET station_id = ? WHERE station_id = ?").arg(table))
            .run({to.id, from.id});
    Statement(database, "DELETE FROM stations WHERE id = ?").run({from.id});
    if (from.tests18 != to.tests18)
        setTests18(database, to.id);
}
} // namespace

StoreCounts& StoreCounts::operator+=(const StoreCounts& other)
{
    added += other.added;
    duplicates += other.duplicates;
    empty += other.empty;
    otherStations += other.otherStations;
    future += other.future;
    return *this;
}

StoreCounts attemptstore::store(Database& database, const Station& station,
                                const std::vector<LogFile>& files)
{
    Transaction transaction(database, Database::Access::Write);
    schema::requireCurrent(database);
    const bool showsTests18 = std::any_of(files.begin(), files.end(), showsTest18);
    LogStore logs(database, updatedStation(database, station, showsTests18));
    for (const LogFile& file : files)
        logs.add(file);
    transaction.commit();
    return logs.counts;
}

void attemptstore::renameStation(Database& database, const QString& oldName, const QString& newName)
{
    Transaction transaction(database, Database::Access::Write);
    schema::requireCurrent(database);
    const auto stations = AttemptRows::stations(database);
    if (!stations.contains(oldName))
        throw DatabaseError(DatabaseError::Kind::Unusable,
                            QString("no station is named \"%1\"").arg(printableText(oldName)));
    const StationRow from = stations[oldName];
    if (!stations.contains(newName))
        Statement(database, QString("UPDATE stations SET name = %1 WHERE id = ?")
                                .arg(database.sqlDialect().textParameter))
            .run({newName.toUtf8(), from.id});
    else if (newName != oldName)
        unite(database, from, stations[newName]);
    transaction.commit();
}
