// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/attemptstore.h"

#include "yield/logs/attemptrules.h"
#include "yield/logs/messages.h"
#include "yield/store/attemptrows.h"
#include "yield/store/database.h"
#include "yield/store/schema.h"

#include <QDateTime>

#include <algorithm>

namespace
{
/// Clocks of two computers differ by a little.
constexpr int futureSeconds = 600;

struct StationRow {
    int id;
    bool tests18;
};

std::optional<StationRow> findStation(Database& database, const QString& name)
{
    Statement select(database, "SELECT id, tests_18 FROM stations WHERE name = {text}",
                     {name.toUtf8()});
    if (!select.next())
        return std::nullopt;
    return StationRow{select.number(0), select.number(1) != 0};
}

/// From now on the station tests component 18, in its imported logs too: they do not show it.
void setTests18(Database& database, int stationId)
{
    database.run("UPDATE stations SET tests_18 = 1 WHERE id = ?", {stationId});
    const QString imported = QString("run IS NULL AND station_id = %1").arg(stationId);
    database.run("UPDATE attempts SET tests_18 = 1 WHERE " + imported);
    attemptrows::deriveResults(database, imported);
}

bool showsTest18(const LogFile& file)
{
    return (file.name && file.name->isTarvek) ||
           (file.log.marks & attemptrules::channelButtonMarks()).any();
}

/// The row of a station, inserted or changed if need be.
StationRow updatedStation(Database& database, const Station& station, bool showsTests18)
{
    if (!findStation(database, station.name))
        database.run("INSERT INTO stations (name) VALUES ({text})", {station.name.toUtf8()});
    StationRow row = *findStation(database, station.name);
    if ((station.tests18 || showsTests18) && !row.tests18) {
        setTests18(database, row.id);
        row.tests18 = true;
    }
    return row;
}

/// The rows of a run with one more save, the attempt first: the highest save, which keeps the
/// oldest id. former: the run's rows, and the imported logs that turn out to be this save.
std::vector<LogRow> withSave(LogRow save, const std::vector<LogRow>& former)
{
    std::vector<LogRow> rows;
    qint64 attemptId = 0;
    bool tests18 = save.tests18;
    for (const LogRow& row : former) {
        if (row.attemptId != 0)
            attemptId = attemptId == 0 ? row.attemptId : std::min(attemptId, row.attemptId);
        tests18 = tests18 || (row.tests18 && row.run == save.run);
        if (row.log == save.log) // the same row, however often it was saved
            save.save = std::max(save.save, row.save);
        else
            rows.push_back({0, false, save.stationId, row.log, row.run, row.save});
    }
    rows.push_back({0, false, save.stationId, save.log, save.run, save.save});
    const auto isLower = [](const LogRow& left, const LogRow& right) {
        return left.save < right.save;
    };
    std::iter_swap(rows.begin(), std::max_element(rows.begin(), rows.end(), isLower));
    rows.front().attemptId = attemptId;
    rows.front().tests18 = tests18;
    return rows;
}

/// Of a run that comes from several stations, the first by name counts: that depends on no order.
int firstByName(Database& database, int stationId, int otherId)
{
    if (stationId == otherId)
        return stationId;
    Statement select(database,
                     "SELECT id FROM stations WHERE id IN (?, ?) ORDER BY name {bytewise} LIMIT 1",
                     {stationId, otherId});
    return select.next() ? select.number(0) : stationId;
}

void replace(Database& database, const std::vector<LogRow>& former, const std::vector<LogRow>& run)
{
    if (std::is_permutation(run.begin(), run.end(), former.begin(), former.end()))
        return;
    const LogRow& attempt = run.front();
    for (const LogRow& row : former)
        if (row.attemptId == 0 || row.attemptId != attempt.attemptId)
            attemptrows::remove(database, row);
    attemptrows::writeAttempt(database, attempt);
    for (auto repeated = run.begin() + 1; repeated != run.end(); ++repeated)
        attemptrows::insertRepeated(database, *repeated);
}

/// Stores the logs of one station.
struct LogStore {
    Database& database;
    const StationRow station;
    StoreCounts counts;
    const QString future =
        QDateTime::currentDateTime().addSecs(futureSeconds).toString(Qt::ISODate);

    void add(const LogFile& file);
    bool addImported(const StationLog& log);
    bool addSave(LogRow save);
};

void LogStore::add(const LogFile& file)
{
    if (file.log.marks.none()) {
        ++counts.empty;
        return;
    }
    const bool isAdded =
        file.name
            ? addSave({0, showsTest18(file), station.id, file.log, file.name->run, file.name->save})
            : addImported(file.log);
    ++(isAdded ? counts.added : counts.duplicates);
    if (isAdded && file.log.testedAt > future)
        ++counts.future;
}

/// A log that names no run is an attempt, unless it is a duplicate: of a log of this station, or of
/// one that names its run. Returns false for a duplicate.
bool LogStore::addImported(const StationLog& log)
{
    const auto sameLogs = attemptrows::find(database, log);
    const auto hasThisStation = [&](const LogRow& row) { return row.stationId == station.id; };
    const auto hasRun = [](const LogRow& row) { return !row.run.isNull(); };
    const bool isOfStation = std::any_of(sameLogs.begin(), sameLogs.end(), hasThisStation);
    if (!isOfStation && !sameLogs.empty())
        ++counts.otherStations;
    if (isOfStation || std::any_of(sameLogs.begin(), sameLogs.end(), hasRun))
        return false;
    attemptrows::writeAttempt(database, {0, station.tests18, station.id, log});
    return true;
}

/// Returns false for a duplicate.
bool LogStore::addSave(LogRow save)
{
    std::vector<LogRow> former;
    std::vector<LogRow> ofOtherRuns;
    for (const LogRow& row : attemptrows::find(database, save.log, save.run))
        (row.run.isNull() || row.run == save.run ? former : ofOtherRuns).push_back(row);
    bool isDuplicate = false;
    bool isAtOtherStation = false;
    for (const LogRow& row : former) {
        isDuplicate = isDuplicate || row.log == save.log;
        isAtOtherStation = isAtOtherStation || row.stationId != station.id;
        if (row.run == save.run)
            save.stationId = firstByName(database, save.stationId, row.stationId);
    }
    counts.otherStations += isAtOtherStation ? 1 : 0;
    for (const LogRow& row : ofOtherRuns)
        if (row.stationId == save.stationId) // left the same log within a second: one attempt
            return false;
    replace(database, former, withSave(save, former));
    return !isDuplicate;
}

/// Moves all rows of a station to another one. Of a log that both have one row stays, that of
/// repeated_saves first.
void unite(Database& database, const StationRow& from, const StationRow& to)
{
    const QString remove =
        "DELETE FROM %1 WHERE station_id = ? AND EXISTS (SELECT 1 FROM %2 AS other "
        "WHERE other.station_id = ? AND other.serial = %1.serial "
        "AND other.tested_at = %1.tested_at AND other.marks = %1.marks)";
    database.run(remove.arg("attempts", "repeated_saves"), {from.id, to.id});
    database.run(remove.arg("attempts", "repeated_saves"), {to.id, from.id});
    database.run(remove.arg("attempts", "attempts"), {from.id, to.id});
    database.run(remove.arg("repeated_saves", "repeated_saves"), {from.id, to.id});
    for (const char* table : {"attempts", "repeated_saves"})
        database.run(QString("UPDATE %1 SET station_id = ? WHERE station_id = ?").arg(table),
                     {to.id, from.id});
    database.run("DELETE FROM stations WHERE id = ?", {from.id});
    if (from.tests18 != to.tests18)
        setTests18(database, to.id);
}
} // namespace

void attemptstore::store(Database& database, const Station& station,
                         const std::vector<LogFile>& files, StoreCounts& counts)
{
    Transaction transaction(database, Database::Access::Write);
    schema::requireCurrent(database);
    const bool showsTests18 = std::any_of(files.begin(), files.end(), showsTest18);
    LogStore logs{database, updatedStation(database, station, showsTests18), counts};
    for (const LogFile& file : files)
        logs.add(file);
    transaction.commit();
    counts = logs.counts;
}

void attemptstore::renameStation(Database& database, const QString& oldName, const QString& newName)
{
    Transaction transaction(database, Database::Access::Write);
    schema::requireCurrent(database);
    const auto from = findStation(database, oldName);
    const auto to = findStation(database, newName);
    if (!from)
        throw DatabaseError(DatabaseError::Kind::Unusable,
                            QString("no station is named \"%1\"").arg(printableText(oldName)));
    if (!to)
        database.run("UPDATE stations SET name = {text} WHERE id = ?",
                     {newName.toUtf8(), from->id});
    else if (newName != oldName)
        unite(database, *from, *to);
    transaction.commit();
}
