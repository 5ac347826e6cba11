// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/attemptrows.h"

#include "yield/logs/attemptrules.h"
#include "yield/store/database.h"
#include "yield/store/sqldialect.h"

namespace
{
/// Rows of attempts as rowsOf reads them; a condition goes behind it.
QString selectAttempts(const SqlDialect& dialect)
{
    return QString("SELECT id, station_id, %1, tested_at, marks, run, save_number, tests_18 "
                   "FROM attempts WHERE ")
        .arg(dialect.utf8Of("serial"));
}

std::vector<LogRow> rowsOf(Statement& select)
{
    std::vector<LogRow> rows;
    while (select.next()) {
        const QString serial = select.text(2);
        const StationLog log{serial, select.value(3).toString(), select.marks(4, serial)};
        rows.push_back({select.value(0), select.number(1), log, {}, select.number(7) != 0});
        if (!select.value(5).isNull())
            rows.back().save = OutboxName{select.value(5).toString(), select.number(6)};
    }
    return rows;
}

/// The condition for the rows of a serial, time and marks.
QString isLog(const SqlDialect& dialect)
{
    return QString("serial %1 = %2 AND tested_at %1 = ? AND marks = ?")
        .arg(dialect.bytewise, dialect.textParameter);
}

QVariantList valuesOf(const StationLog& log)
{
    return {log.serial.toUtf8(), log.testedAt, bandmarks::packed(log.marks)};
}

/// Every row of a log, and the attempt of a run.
QString selectLogAndRun(const SqlDialect& dialect)
{
    return selectAttempts(dialect) + isLog(dialect) + " UNION " + selectAttempts(dialect) +
           "run = ?" +
           QString(" UNION SELECT NULL, station_id, %1, tested_at, marks, run, save_number, 0 "
                   "FROM repeated_saves WHERE ")
               .arg(dialect.utf8Of("serial")) +
           isLog(dialect);
}

QString insertInto(const SqlDialect& dialect)
{
    return QString("INSERT INTO attempts (serial, tested_at, marks, station_id, passed, "
                   "aborted_component, tests_18, run, started_at, save_number) "
                   "VALUES (%1, ?, ?, ?, ?, ?, ?, ?, ?, ?)")
        .arg(dialect.textParameter);
}

QString updateById(const SqlDialect& dialect)
{
    return QString("UPDATE attempts SET serial = %1, tested_at = ?, marks = ?, station_id = ?, "
                   "passed = ?, aborted_component = ?, tests_18 = ?, run = ?, started_at = ?, "
                   "save_number = ? WHERE id = ?")
        .arg(dialect.textParameter);
}
} // namespace

AttemptRows::AttemptRows(Database& usedDatabase)
    : database(usedDatabase)
    , selectLog(database, selectLogAndRun(database.sqlDialect()))
    , insertAttempt(database, insertInto(database.sqlDialect()))
    , updateAttempt(database, updateById(database.sqlDialect()))
    , insertMissed(database, "INSERT INTO missed_bands VALUES (?, ?, ?)")
    , deleteMissed(database, "DELETE FROM missed_bands WHERE attempt_id = ?")
{
}

QMap<QString, StationRow> AttemptRows::stations(Database& database)
{
    Statement select(
        database,
        QString("SELECT id, %1, tests_18 FROM stations").arg(database.sqlDialect().utf8Of("name")));
    select.run();
    QMap<QString, StationRow> rows;
    while (select.next())
        rows[select.text(1)] = {select.number(0), select.text(1), select.number(2) != 0};
    return rows;
}

std::vector<LogRow> AttemptRows::find(const StationLog& log, const QString& run)
{
    selectLog.run(valuesOf(log) + QVariantList{run} + valuesOf(log));
    return rowsOf(selectLog);
}

void AttemptRows::writeAttempt(const LogRow& row)
{
    const auto outcome = attemptrules::outcomeOf(row.log.marks, row.tests18);
    const QVariant noNumber(QVariant::Int);
    QVariantList values = valuesOf(row.log);
    values << row.stationId << (outcome.hasPassed() ? 1 : 0)
           << (outcome.abortedAt ? QVariant(*outcome.abortedAt) : noNumber) << (row.tests18 ? 1 : 0)
           << (row.save ? row.save->run : QString())
           << (row.save ? row.save->startedAt() : QString())
           << (row.save ? QVariant(row.save->save) : noNumber);
    QVariant id = row.attemptId;
    if (id.isNull()) {
        insertAttempt.run(values);
    } else {
        updateAttempt.run(values << id);
        deleteMissed.run({id});
    }
    if (id.isNull() && !outcome.missed.empty())
        id = insertAttempt.insertedId();
    for (const auto& band : outcome.missed)
        insertMissed.run({id, band.componentNum, band.band});
}

void AttemptRows::removeAttempt(const QVariant& id)
{
    Statement(database, "DELETE FROM attempts WHERE id = ?").run({id}); // with its missed bands
}

void AttemptRows::insertRepeated(const LogRow& row)
{
    Statement(database, QString("INSERT INTO repeated_saves (serial, tested_at, marks, station_id, "
                                "run, save_number) VALUES (%1, ?, ?, ?, ?, ?)")
                            .arg(database.sqlDialect().textParameter))
        .run(valuesOf(row.log) + QVariantList{row.stationId, row.save->run, row.save->save});
}

void AttemptRows::removeRepeated(const LogRow& row)
{
    const QString isRow = isLog(database.sqlDialect()) + " AND station_id = ?";
    Statement(database, "DELETE FROM repeated_saves WHERE " + isRow)
        .run(valuesOf(row.log) + QVariantList{row.stationId});
}

void AttemptRows::moveRepeated(const QString& run, int stationId)
{
    Statement(database, "UPDATE repeated_saves SET station_id = ? WHERE run = ?")
        .run({stationId, run});
}

void AttemptRows::deriveResults(const QString& condition)
{
    Statement select(database, selectAttempts(database.sqlDialect()) + condition);
    select.run();
    for (const LogRow& row : rowsOf(select))
        writeAttempt(row);
}
