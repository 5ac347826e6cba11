// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/schema.h"

#include "yield/store/attemptrows.h"
#include "yield/store/database.h"

#include <QResource>

namespace
{
constexpr int newestSchema = 3;

/// The version of the tables, 0 without tables. Throws for newer ones.
int knownVersion(Database& database)
{
    Statement find(database, database.sqlDialect().findSchema);
    if (!find.next())
        return 0;
    Statement select(database, "SELECT version FROM schema_version");
    const int version = select.next() ? select.number(0) : 0;
    if (version > newestSchema)
        throw DatabaseError(
            DatabaseError::Kind::Unavailable,
            QString("the database was made by a newer zorvi_yield, its tables have version %1; "
                    "install the newer one")
                .arg(version));
    return version;
}

void run(Database& database, const QString& script)
{
    const QString statements = QResource(":/store/" + script).uncompressedData();
    for (const QString& statement : statements.split(";\n", Qt::SkipEmptyParts))
        database.run(statement);
}

} // namespace

void schema::migrate(Database& database)
{
    Transaction transaction(database, Database::Access::Write);
    const int version = knownVersion(database);
    if (version == newestSchema)
        return;
    if (version == 0)
        run(database, "schema.sql");
    if (version == 1)
        run(database, "migrate1to2.sql");
    if (version == 1 || version == 2)
        run(database, "migrate2to3.sql");
    run(database, "indexes.sql");
    if (version == 1) // which did not know aborted runs
        attemptrows::deriveResults(database, "passed = 0");
    transaction.commit();
}

void schema::requireCurrent(Database& database)
{
    const int version = knownVersion(database);
    if (version == newestSchema)
        return;
    throw DatabaseError(DatabaseError::Kind::Unusable,
                        version == 0
                            ? "the database holds no attempts yet; \"import\" puts them there"
                            : "the database was made by an older zorvi_yield; \"import\" "
                              "migrates it, after that every command reads it");
}
