// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/attemptrows.h"

#include "yield/logs/attemptrules.h"

namespace
{
/// Rows as rowsOf reads them; a condition goes behind it.
const QString selectAttempts = "SELECT id, tests_18, station_id, {serial}, tested_at, marks, run, "
                               "save_number FROM attempts WHERE ";
const QString selectRepeated = "SELECT 0, 0, station_id, {serial}, tested_at, marks, run, "
                               "save_number FROM repeated_saves WHERE ";
/// The condition for the rows of a serial, time and marks.
const QString isLog = "serial {bytewise} = {text} AND tested_at {bytewise} = ? AND marks = ?";
/// The columns that both tables have, and the others of attempts.
const QString logColumns = "serial, tested_at, marks, station_id, run, save_number";
const QString logValues = "{text}, ?, ?, ?, ?, ?";
const QString columns = logColumns + ", started_at, tests_18, passed, aborted_component";
const QString values = logValues + ", ?, ?, ?, ?";
const QString insert = "INSERT INTO attempts (" + columns + ") VALUES (" + values + ")";
const QString update = "UPDATE attempts SET (" + columns + ") = (" + values + ") WHERE id = ?";

QVariantList valuesOf(const StationLog& log)
{
    return {log.serial.toUtf8(), log.testedAt, bandmarks::packed(log.marks)};
}

QVariantList valuesOf(const LogRow& row)
{
    const QVariant noNumber(QVariant::Int);
    return valuesOf(row.log) << row.stationId << row.run
                             << (row.run.isNull() ? noNumber : QVariant(row.save));
}

std::vector<LogRow> rowsOf(Statement& select)
{
    std::vector<LogRow> rows;
    while (select.next()) {
        const QString serial = select.text(3);
        rows.push_back({select.value(0).toLongLong(),
                        select.number(1) != 0,
                        select.number(2),
                        {serial, select.value(4).toString(), select.marks(5, serial)},
                        select.value(6).toString(),
                        select.number(7)});
    }
    return rows;
}
} // namespace

std::vector<LogRow> attemptrows::find(Database& database, const StationLog& log, const QString& run)
{
    // Not by OR, which does not use the indexes on PostgreSQL.
    static const QString sql = selectAttempts + isLog + " UNION " + selectAttempts +
                               "run = ? UNION " + selectRepeated + isLog + " UNION " +
                               selectRepeated + "run = ?";
    const QVariantList once = valuesOf(log) + QVariantList{run};
    Statement select(database, sql, once + once);
    return rowsOf(select);
}

void attemptrows::writeAttempt(Database& database, const LogRow& row)
{
    const auto outcome = attemptrules::outcomeOf(row.log.marks, row.tests18);
    QVariantList bound = valuesOf(row);
    bound << OutboxName{row.run}.startedAt() << (row.tests18 ? 1 : 0)
          << (outcome.hasPassed() ? 1 : 0)
          << (outcome.abortedAt ? *outcome.abortedAt : QVariant(QVariant::Int));
    QVariant id = row.attemptId;
    if (row.attemptId != 0) {
        database.run(update, bound << id);
        database.run("DELETE FROM missed_bands WHERE attempt_id = ?", {id});
    } else {
        const QSqlQuery inserted = database.run(insert, bound);
        if (!outcome.missed.empty()) // otherwise PostgreSQL would be asked for nothing
            id = inserted.lastInsertId();
    }
    for (const auto& band : outcome.missed)
        database.run("INSERT INTO missed_bands VALUES (?, ?, ?)",
                     {id, band.componentNum, band.band});
}

void attemptrows::insertRepeated(Database& database, const LogRow& row)
{
    database.run("INSERT INTO repeated_saves (" + logColumns + ") VALUES (" + logValues + ")",
                 valuesOf(row));
}

void attemptrows::remove(Database& database, const LogRow& row)
{
    if (row.attemptId != 0) // with its missed bands
        database.run("DELETE FROM attempts WHERE id = ?", {row.attemptId});
    else
        database.run("DELETE FROM repeated_saves WHERE station_id = ? AND " + isLog,
                     QVariantList{row.stationId} + valuesOf(row.log));
}

void attemptrows::deriveResults(Database& database, const QString& condition)
{
    Statement select(database, selectAttempts + condition);
    for (const LogRow& row : rowsOf(select))
        writeAttempt(database, row);
}
