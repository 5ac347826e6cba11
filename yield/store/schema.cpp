// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/schema.h"

#include "yield/store/database.h"
#include "yield/store/sqldialect.h"
#include "yield/store/statement.h"
#include "yield/store/stationrows.h"

#include <QFile>

namespace
{
constexpr int newestSchema = 2;

/// 0 without tables.
int findVersion(Database& database)
{
    Statement find(database, database.sqlDialect().findSchema);
    find.run();
    if (!find.next())
        return 0;
    Statement select(database, "SELECT version FROM schema_version");
    select.run();
    return select.next() ? select.number(0) : 0;
}

void run(Database& database, const char* resource)
{
    QFile file(resource);
    file.open(QIODevice::ReadOnly);
    const QString statements = QString::fromUtf8(file.readAll());
    for (const QString& statement : statements.split(";\n", Qt::SkipEmptyParts))
        Statement(database, statement).run();
}

/// Throws for newer tables.
int knownVersion(Database& database)
{
    const int version = findVersion(database);
    if (version > newestSchema)
        throw DatabaseError(
            DatabaseError::Kind::NewerSchema,
            QString("the database was made by a newer zorvi_yield, its tables have version %1; "
                    "install the newer one")
                .arg(version));
    return version;
}
} // namespace

void schema::migrate(Database& database)
{
    Transaction transaction(database, Database::Access::Write);
    const int version = knownVersion(database);
    if (version == newestSchema)
        return;
    run(database, version == 0 ? ":/store/schema.sql" : ":/store/upgrade.sql");
    if (version != 0) // version 1 grouped by other rules
        for (const StationRow& station : StationRows::stations(database))
            StationRows(database, station).writeAgain();
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
