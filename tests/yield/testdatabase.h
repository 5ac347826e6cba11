// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "tests/yield/postgresserver.h"
#include "yield/store/database.h"

#include <functional>
#include <memory>

/// Databases of the tests, and what they hold.
namespace testdatabase
{
/// An empty database of a server, or without one of SQLite in memory.
inline std::unique_ptr<Database> empty(const PostgresServer* server)
{
    auto database = std::make_unique<Database>(server != nullptr ? server->location() : ":memory:",
                                               Database::Access::Write);
    if (server != nullptr)
        database->run("DROP SCHEMA public CASCADE; CREATE SCHEMA public");
    return database;
}

/// Returns "none", or the kind and the text of the error.
inline QString errorOf(const std::function<void()>& act)
{
    try {
        act();
    } catch (const DatabaseError& error) {
        const char* kinds[] = {"unusable: ", "unavailable: ", "data: "};
        return QString(kinds[static_cast<int>(error.kind)]) + error.what();
    }
    return "none";
}

/// What a statement selects, a line for each row, sorted.
inline QStringList linesOf(Database& database, const QString& sql)
{
    Statement select(database, sql);
    QStringList lines;
    while (select.next())
        lines << select.text(0);
    lines.sort();
    return lines;
}

/// All rows but for their ids, sorted: "station: serial at 12:05, passed, save 2 of run 1", of
/// repeated_saves "station: serial at 12:00, repeated, …"; a row for each missed band.
inline QStringList rows(Database& database)
{
    const QString log = "name || ': ' || serial || ' at ' || substr(tested_at, 12, 5)";
    const QString save =
        "coalesce(', save ' || save_number || ' of run ' || substr(run, 36, 1), '')";
    return linesOf(database, "SELECT " + log + R"(
               || CASE WHEN passed = 1 THEN ', passed'
                       WHEN aborted_component IS NULL THEN ', failed'
                       ELSE ', aborted at ' || aborted_component END
               || CASE WHEN attempts.tests_18 = 1 THEN ', 18 tested' ELSE '' END || )" +
                                 save + R"(
               || coalesce(', missed ' || component || ':' || band, '')
        FROM attempts JOIN stations ON stations.id = station_id
             LEFT JOIN missed_bands ON attempt_id = attempts.id
        UNION ALL
        SELECT )" + log + " || ', repeated' || " +
                                 save + R"(
        FROM repeated_saves JOIN stations ON stations.id = station_id)");
}
} // namespace testdatabase
