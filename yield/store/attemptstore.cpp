// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/attemptstore.h"

#include "yield/store/database.h"

#include <QHash>
#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>
#include <QVariant>

#include <algorithm>

using attemptrules::Save;

namespace
{
bool holds(const std::vector<Save>& saves, const Save& save)
{
    return std::find(saves.begin(), saves.end(), save) != saves.end();
}

/// So many logs are looked up with one query. Qt names every value of a query, and SQLite compares
/// each name with all others.
constexpr int lookupSize = 100;

/// The logs of one unit at the station.
struct Unit {
    attemptrules::Attempts stored; ///< In the database.
    std::vector<Save> added;
};

/// One of the two lists of Attempts.
using SavesOfUnit = std::vector<Save> attemptrules::Attempts::*;

/// One transaction's statements. After the first that fails, the others do nothing.
class Transaction
{
public:
    explicit Transaction(QSqlDatabase& connection)
        : database(connection)
        , findAttempts(connection)
        , findOthers(connection)
        , insertAttempt(connection)
        , insertMissedBand(connection)
    {
        const QByteArray ofUnits = " WHERE station_id = ? AND serial IN (?" +
                                   QByteArray(", ?").repeated(lookupSize - 1) + ')';
        prepare(findAttempts, "SELECT serial, tested_at, marks FROM attempts" + ofUnits);
        prepare(findOthers, "SELECT serial, tested_at, marks FROM other_saves" + ofUnits);
        prepare(insertAttempt, "INSERT INTO attempts (station_id, serial, tested_at, marks, "
                               "complete) VALUES (?, ?, ?, ?, ?)");
        prepare(insertMissedBand, "INSERT INTO missed_bands VALUES (?, ?, ?)");
    }

    const QString& error() const { return errorText; }

    /// The station's row, created if missing. Marks of component 18 among the logs say that the
    /// station tests it.
    void findStation(const Station& station, const std::vector<StationLog>& logs)
    {
        QSqlQuery query(database);
        const char* const find = "SELECT id, tests_18 FROM stations WHERE name = ?";
        run(query, find, {station.name});
        if (isFine() && !query.next()) {
            run(query, "INSERT INTO stations (name) VALUES (?)", {station.name});
            run(query, find, {station.name});
            query.next();
        }
        if (!isFine())
            return;
        stationId = query.value(0);
        tests18 = query.value(1).toInt() != 0;
        query.finish();
        const bool isShown = std::any_of(logs.begin(), logs.end(), [](const StationLog& log) {
            return attemptrules::showsComponent18(log.marks);
        });
        if (!tests18 && (station.tests18 || isShown))
            beginToTest18();
    }

    void store(const std::vector<StationLog>& logs, StoreCounts& counts)
    {
        for (std::size_t i = 0; i < logs.size(); i += lookupSize)
            storePart(logs.data() + i, std::min<std::size_t>(lookupSize, logs.size() - i), counts);
    }

private:
    bool isFine() const { return errorText.isEmpty(); }

    void check(bool done, const QSqlQuery& query)
    {
        if (isFine() && !done)
            errorText = Database::inWords(query.lastError());
    }

    void prepare(QSqlQuery& query, const char* statement)
    {
        query.setForwardOnly(true);
        if (isFine())
            check(query.prepare(QString::fromLatin1(statement)), query);
    }

    void exec(QSqlQuery& query, const QVariantList& values)
    {
        if (!isFine())
            return;
        for (int i = 0; i < values.size(); ++i)
            query.bindValue(i, values[i]);
        check(query.exec(), query);
    }

    void run(QSqlQuery& query, const char* statement, const QVariantList& values)
    {
        prepare(query, statement);
        exec(query, values);
    }

    /// No attempt of the station has a mark of component 18 yet, so each missed both bands.
    void beginToTest18()
    {
        tests18 = true;
        QSqlQuery query(database);
        run(query, "UPDATE stations SET tests_18 = 1 WHERE id = ?", {stationId});
        run(query, "UPDATE attempts SET complete = 0 WHERE station_id = ?", {stationId});
        for (int band = 0; band < bandmarks::bandCount(roster::channelButton); ++band)
            run(query,
                "INSERT INTO missed_bands SELECT id, CAST(? AS INTEGER), CAST(? AS INTEGER) FROM "
                "attempts WHERE station_id = ?",
                {roster::channelButton, band, stationId});
    }

    void insert(const QString& serial, const Save& save)
    {
        const auto missed = attemptrules::outcomeOf(save.marks, tests18).missed;
        exec(insertAttempt, {stationId, serial, save.testedAt, bandmarks::packed(save.marks),
                             missed.empty() ? 1 : 0});
        if (missed.empty() || !isFine())
            return;
        const QVariant attemptId = insertAttempt.lastInsertId();
        for (const auto& band : missed)
            exec(insertMissedBand, {attemptId, band.componentNum, band.band});
    }

    void storePart(const StationLog* logs, std::size_t count, StoreCounts& counts)
    {
        QHash<QString, Unit> units;
        QStringList serials;
        for (std::size_t i = 0; i < count; ++i)
            if (!units.contains(logs[i].serial)) {
                units.insert(logs[i].serial, {});
                serials << logs[i].serial;
            }
        if (lookUp(findAttempts, serials, units, &attemptrules::Attempts::attempts))
            lookUp(findOthers, serials, units, &attemptrules::Attempts::others);
        for (std::size_t i = 0; i < count; ++i) {
            Unit& unit = units[logs[i].serial];
            const Save save{logs[i].testedAt, logs[i].marks};
            if (!attemptrules::isAttempt(save.marks)) {
                ++counts.notAttempt;
            } else if (holds(unit.stored.attempts, save) || holds(unit.stored.others, save) ||
                       holds(unit.added, save)) {
                ++counts.known;
            } else {
                ++counts.added;
                unit.added.push_back(save);
            }
        }
        for (const QString& serial : serials) {
            const Unit& unit = units[serial];
            if (unit.stored.attempts.empty() && unit.added.size() == 1)
                insert(serial, unit.added.front());
            else if (!unit.added.empty())
                regroup(serial, unit);
        }
    }

    /// Adds the saves of these units that one of the tables holds. Whether there are any.
    bool lookUp(QSqlQuery& query, const QStringList& serials, QHash<QString, Unit>& units,
                SavesOfUnit saves)
    {
        QVariantList values = {stationId};
        for (int i = 0; i < lookupSize; ++i)
            values << serials[std::min(i, serials.size() - 1)];
        exec(query, values);
        bool isFound = false;
        while (isFine() && query.next()) {
            const QString serial = query.value(0).toString();
            const auto marks = bandmarks::unpacked(query.value(2).toByteArray());
            if (marks)
                (units[serial].stored.*saves).push_back({query.value(1).toString(), *marks});
            else
                errorText = bandmarks::damaged();
            isFound = true;
        }
        check(!query.lastError().isValid(), query);
        query.finish();
        return isFound;
    }

    void change(const char* statement, const QString& serial, const Save& save)
    {
        QSqlQuery query(database);
        run(query, statement, {stationId, serial, save.testedAt, bandmarks::packed(save.marks)});
    }

    /// Groups all logs of the unit anew and changes the rows that differ.
    void regroup(const QString& serial, const Unit& unit)
    {
        const auto& present = unit.stored;
        std::vector<Save> all = present.attempts;
        all.insert(all.end(), present.others.begin(), present.others.end());
        all.insert(all.end(), unit.added.begin(), unit.added.end());
        const auto wanted = attemptrules::grouped(all);
        for (const Save& save : present.attempts)
            if (!holds(wanted.attempts, save))
                change("DELETE FROM attempts WHERE station_id = ? AND serial = ? AND tested_at = ? "
                       "AND marks = ?",
                       serial, save);
        for (const Save& save : present.others)
            if (!holds(wanted.others, save))
                change("DELETE FROM other_saves WHERE station_id = ? AND serial = ? AND "
                       "tested_at = ? AND marks = ?",
                       serial, save);
        for (const Save& save : wanted.attempts)
            if (!holds(present.attempts, save))
                insert(serial, save);
        for (const Save& save : wanted.others)
            if (!holds(present.others, save))
                change("INSERT INTO other_saves VALUES (?, ?, ?, ?)", serial, save);
    }

    QSqlDatabase& database;
    QSqlQuery findAttempts;
    QSqlQuery findOthers;
    QSqlQuery insertAttempt;
    QSqlQuery insertMissedBand;
    QVariant stationId;
    bool tests18 = false;
    QString errorText;
};
} // namespace

bool attemptstore::store(Database& database, const Station& station,
                         const std::vector<StationLog>& logs, StoreCounts& counts, QString& error)
{
    if (!database.beginWriting(error))
        return false;
    QSqlDatabase& connection = database.connection();
    StoreCounts stored = counts;
    {
        Transaction transaction(connection);
        transaction.findStation(station, logs);
        transaction.store(logs, stored);
        error = transaction.error();
    }
    QSqlQuery end(connection);
    if (error.isEmpty() && !end.exec(QStringLiteral("COMMIT")))
        error = Database::inWords(end.lastError());
    if (!error.isEmpty()) {
        end.exec(QStringLiteral("ROLLBACK"));
        return false;
    }
    counts = stored;
    return true;
}
