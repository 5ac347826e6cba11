// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/store/database.h"
#include "yield/store/statement.h"

#include <QStringList>

/// The rows of a database, for people to compare.
namespace storedrows
{
/// An attempt as "station: serial at 12:05, passed, save 2 of run 1"; a row of repeated_saves as
/// "station: serial at 12:00, repeated, save 1 of run 1"; the last digit stands for the run.
inline QString text(const Statement& select)
{
    QString text = QString("%1: %2 at %3, %4 marks, %5")
                       .arg(select.value(0).toString(), select.value(1).toString(),
                            select.value(2).toString().mid(11, 5))
                       .arg(bandmarks::unpacked(select.value(3).toByteArray()).count())
                       .arg(select.value(4).toString());
    if (!select.value(5).isNull())
        text += " at " + select.value(5).toString();
    if (select.number(6) != 0)
        text += ", 18 tested";
    if (!select.value(7).isNull())
        text += QString(", save %1 of run %2")
                    .arg(select.number(8))
                    .arg(select.value(7).toString().right(1));
    return text;
}

/// All rows but for their ids, sorted; behind an attempt the bands that it missed.
inline QStringList all(Database& database)
{
    Statement select(database, R"(
        SELECT name, serial, tested_at, marks,
               CASE WHEN passed = 1 THEN 'passed' WHEN aborted_component IS NULL THEN 'failed'
                    ELSE 'aborted' END,
               aborted_component, attempts.tests_18, run, save_number, component, band
        FROM attempts JOIN stations ON stations.id = station_id
             LEFT JOIN missed_bands ON attempt_id = attempts.id
        UNION ALL
        SELECT name, serial, tested_at, marks, 'repeated', NULL, 0, run, save_number, NULL, NULL
        FROM repeated_saves JOIN stations ON stations.id = station_id)");
    select.run();
    QStringList rows;
    while (select.next())
        rows << text(select) +
                    (select.value(9).isNull()
                         ? QString()
                         : QString(", missed %1:%2").arg(select.number(9)).arg(select.number(10)));
    rows.sort();
    return rows;
}
} // namespace storedrows
