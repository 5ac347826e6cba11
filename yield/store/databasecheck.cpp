// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/databasecheck.h"

#include "yield/logs/printabletext.h"
#include "yield/store/stationrows.h"
#include "yield/store/transaction.h"

#include <algorithm>

using attemptrules::Save;

namespace
{
bool haveSame(const std::vector<Save>& left, const std::vector<Save>& right)
{
    return std::is_permutation(left.begin(), left.end(), right.begin(), right.end());
}

QString bandText(int componentNum, int band)
{
    return QString(" %1:%2").arg(componentNum).arg(band);
}

/// A row of the table attempts.
struct Row {
    QVariant id;
    QString testedAt;
    BandMarks marks;
    int complete = 0;
    QVariant endedAt;
};

class Checker
{
public:
    Checker(Database& usedDatabase, const std::function<void(const QString&)>& lineSay)
        : database(usedDatabase)
        , say(lineSay)
        , findAttempts(database, R"(
              SELECT id, tested_at, marks, complete, ended_at
              FROM attempts
              WHERE station_id = ? AND serial = {text_of ?})")
        , findBands(database, R"(
              SELECT component, band
              FROM missed_bands
              WHERE attempt_id = ?
              ORDER BY component, band)")
    {
    }

    int check()
    {
        for (const StationRow& station : StationRows::stations(database)) {
            StationRows rows(database, station);
            rows.forEachUnit([&](const QString& serial, const UnitLogs& logs) {
                checkUnit(station, serial, logs);
            });
        }
        countStrays("missed bands of no attempt", R"(
            SELECT count(*)
            FROM missed_bands
            WHERE NOT EXISTS (SELECT 1 FROM attempts WHERE id = attempt_id))");
        countStrays("saves of units without an attempt", R"(
            SELECT count(*)
            FROM repeated_saves AS saves
            WHERE NOT EXISTS (SELECT 1 FROM attempts WHERE station_id = saves.station_id
                                                       AND serial = saves.serial))");
        return differences;
    }

private:
    void differ(const QString& line)
    {
        ++differences;
        say(line);
    }

    void checkUnit(const StationRow& station, const QString& serial, const UnitLogs& logs)
    {
        const QString unit = QString("station \"%1\", serial \"%2\": ")
                                 .arg(printableText(station.name), printableText(serial));
        const auto wanted = attemptrules::grouped(logs.all());
        if (!haveSame(wanted.attempts, logs.grouped.attempts) ||
            !haveSame(wanted.others, logs.grouped.others))
            differ(unit + "its logs are grouped otherwise than their dates and marks say");
        findAttempts.run({station.id, findAttempts.valueOf(serial)});
        std::vector<Row> rows;
        while (findAttempts.next())
            rows.push_back({findAttempts.value(0), findAttempts.plainText(1),
                            findAttempts.marks(2, serial), findAttempts.number(3),
                            findAttempts.value(4)});
        for (const Row& row : rows)
            checkRow(unit + "attempt of " + row.testedAt + ": ", row,
                     attemptrules::outcomeOf(row.marks, station.tests18));
    }

    void checkRow(const QString& at, const Row& row, const attemptrules::Outcome& outcome)
    {
        if (row.complete != (outcome.isComplete() ? 1 : 0))
            differ(at + "\"complete\" is not what its marks say");
        if (row.endedAt.isNull() == outcome.endedAt.has_value() ||
            row.endedAt.toInt() != outcome.endedAt.value_or(0))
            differ(at + "\"ended_at\" is not what its marks say");
        QString wanted;
        for (const auto& band : outcome.missed)
            wanted += bandText(band.componentNum, band.band);
        QString present;
        findBands.run({row.id});
        while (findBands.next())
            present += bandText(findBands.number(0), findBands.number(1));
        if (present != wanted)
            differ(at + "its missed bands are not what its marks say");
    }

    void countStrays(const char* what, const char* sql)
    {
        Statement count(database, sql);
        count.run();
        count.next();
        const int strays = count.number(0);
        if (strays > 0)
            differ(QString("%1 %2").arg(strays).arg(what));
    }

    Database& database;
    const std::function<void(const QString&)>& say;
    Statement findAttempts;
    Statement findBands;
    int differences = 0;
};
} // namespace

int databasecheck::check(Database& database, const std::function<void(const QString&)>& say)
{
    const Transaction transaction(database, Database::Access::Read);
    if (transaction.schemaVersion() == 1)
        throw DatabaseError(DatabaseError::Kind::Unusable,
                            "the tables are those of an older zorvi_yield; an import carries them "
                            "over");
    return Checker(database, say).check();
}
