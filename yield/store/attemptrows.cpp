// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/attemptrows.h"

#include "yield/logs/attemptrules.h"
#include "yield/store/database.h"
#include "yield/store/sqldialect.h"

#include <algorithm>

namespace
{
/// The condition for rows of a serial, time and marks: three values.
QString isLog(const SqlDialect& dialect)
{
    return QString("serial %1 = %2 AND tested_at %1 = ? AND marks = ?")
        .arg(dialect.bytewise, dialect.textParameter);
}

QVariantList valuesOf(const StationLog& log)
{
    return {log.serial.toUtf8(), log.testedAt, bandmarks::packed(log.marks)};
}

QVariant passedOf(const attemptrules::Outcome& outcome)
{
    return outcome.hasPassed() ? 1 : 0;
}

QVariant abortedOf(const attemptrules::Outcome& outcome)
{
    return outcome.abortedAt ? QVariant(*outcome.abortedAt) : QVariant(QVariant::Int);
}

/// The columns run and save_number.
std::optional<OutboxName> saveOf(const Statement& select, int runColumn)
{
    if (select.value(runColumn).isNull())
        return std::nullopt;
    return OutboxName{select.value(runColumn).toString(), select.number(runColumn + 1)};
}
} // namespace

AttemptRows::AttemptRows(Database& usedDatabase)
    : database(usedDatabase)
    , selectLog(database, QString(R"(
          SELECT id, station_id, run, save_number FROM attempts WHERE %1
          UNION ALL
          SELECT NULL, station_id, run, save_number FROM repeated_saves WHERE %1)")
                              .arg(isLog(database.sqlDialect())))
    , selectRun(database, QString(R"(
          SELECT id, station_id, %1, tested_at, marks, run, save_number, tests_18
          FROM attempts WHERE run = ?)")
                              .arg(database.sqlDialect().utf8Of("serial")))
    , insertAttempt(database, QString(R"(
          INSERT INTO attempts (serial, tested_at, marks, station_id, passed, aborted_component,
                                tests_18, run, started_at, save_number)
          VALUES (%1, ?, ?, ?, ?, ?, ?, ?, ?, ?))")
                                  .arg(database.sqlDialect().textParameter))
    , updateAttempt(database, QString(R"(
          UPDATE attempts
          SET serial = %1, tested_at = ?, marks = ?, station_id = ?, passed = ?,
              aborted_component = ?, tests_18 = ?, run = ?, started_at = ?, save_number = ?
          WHERE id = ?)")
                                  .arg(database.sqlDialect().textParameter))
    , insertMissed(database, "INSERT INTO missed_bands VALUES (?, ?, ?)")
    , deleteMissed(database, "DELETE FROM missed_bands WHERE attempt_id = ?")
    , insertRepeatedSave(database, QString(R"(
          INSERT INTO repeated_saves (serial, tested_at, marks, station_id, run, save_number)
          VALUES (%1, ?, ?, ?, ?, ?))")
                                       .arg(database.sqlDialect().textParameter))
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

std::vector<LogRow> AttemptRows::find(const StationLog& log)
{
    selectLog.run(valuesOf(log) + valuesOf(log));
    std::vector<LogRow> rows;
    while (selectLog.next())
        rows.push_back({selectLog.value(0), selectLog.number(1), log, saveOf(selectLog, 2)});
    return rows;
}

std::optional<LogRow> AttemptRows::findRun(const QString& run)
{
    selectRun.run({run});
    std::optional<LogRow> row;
    while (selectRun.next()) {
        const QString serial = selectRun.text(2);
        row = LogRow{selectRun.value(0),
                     selectRun.number(1),
                     {serial, selectRun.value(3).toString(), selectRun.marks(4, serial)},
                     saveOf(selectRun, 5),
                     selectRun.number(7) != 0};
    }
    return row;
}

void AttemptRows::writeAttempt(const LogRow& row)
{
    const auto outcome = attemptrules::outcomeOf(row.log.marks, row.tests18);
    const QVariant null(QVariant::String);
    const QVariantList values =
        valuesOf(row.log) + QVariantList{row.stationId,
                                         passedOf(outcome),
                                         abortedOf(outcome),
                                         row.tests18 ? 1 : 0,
                                         row.save ? row.save->run : null,
                                         row.save ? row.save->startedAt() : null,
                                         row.save ? row.save->save : QVariant(QVariant::Int)};
    if (!row.attemptId.isNull()) {
        updateAttempt.run(values + QVariantList{row.attemptId});
        deleteMissed.run({row.attemptId});
        return writeMissed(row.attemptId, outcome.missed);
    }
    insertAttempt.run(values);
    if (!outcome.missed.empty())
        writeMissed(insertAttempt.insertedId(), outcome.missed);
}

void AttemptRows::writeMissed(const QVariant& id, const std::vector<bandmarks::Band>& missed)
{
    for (const auto& band : missed)
        insertMissed.run({id, band.componentNum, band.band});
}

void AttemptRows::removeAttempt(const QVariant& id)
{
    Statement(database, "DELETE FROM attempts WHERE id = ?").run({id}); // with its missed bands
}

void AttemptRows::insertRepeated(const LogRow& row)
{
    insertRepeatedSave.run(valuesOf(row.log) +
                           QVariantList{row.stationId, row.save->run, row.save->save});
}

void AttemptRows::removeRepeated(const LogRow& row)
{
    Statement(database,
              "DELETE FROM repeated_saves WHERE station_id = ? AND " + isLog(database.sqlDialect()))
        .run(QVariantList{row.stationId} + valuesOf(row.log));
}

std::vector<LogRow> AttemptRows::takeRepeated(const QString& run)
{
    Statement select(database, QString(R"(
        SELECT repeated.station_id, %1, repeated.tested_at, repeated.marks, repeated.run,
               repeated.save_number, attempts.tests_18
        FROM repeated_saves AS repeated JOIN attempts ON attempts.run = repeated.run
        WHERE repeated.run = ?)")
                                   .arg(database.sqlDialect().utf8Of("repeated.serial")));
    select.run({run});
    std::vector<LogRow> rows;
    while (select.next()) {
        const QString serial = select.text(1);
        rows.push_back({{},
                        select.number(0),
                        {serial, select.value(2).toString(), select.marks(3, serial)},
                        saveOf(select, 4),
                        select.number(6) != 0});
    }
    Statement(database, "DELETE FROM repeated_saves WHERE run = ?").run({run});
    return rows;
}

void AttemptRows::moveRepeated(const QString& run, int stationId)
{
    Statement(database, "UPDATE repeated_saves SET station_id = ? WHERE run = ?")
        .run({stationId, run});
}

void AttemptRows::deriveResults(const QString& condition)
{
    struct Marks {
        QVariant id;
        BandMarks marks;
        bool tests18;
    };
    Statement select(database, QString("SELECT id, marks, tests_18, %1 FROM attempts WHERE %2")
                                   .arg(database.sqlDialect().utf8Of("serial"), condition));
    select.run();
    std::vector<Marks> attempts;
    while (select.next())
        attempts.push_back(
            {select.value(0), select.marks(1, select.text(3)), select.number(2) != 0});
    Statement update(database,
                     "UPDATE attempts SET passed = ?, aborted_component = ? WHERE id = ?");
    for (const Marks& attempt : attempts) {
        const auto outcome = attemptrules::outcomeOf(attempt.marks, attempt.tests18);
        update.run({passedOf(outcome), abortedOf(outcome), attempt.id});
        deleteMissed.run({attempt.id});
        writeMissed(attempt.id, outcome.missed);
    }
}
