// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/transaction.h"

#include "yield/store/sqldialect.h"
#include "yield/store/statement.h"
#include "yield/store/stationrows.h"

#include <QFile>

namespace
{
constexpr int newestSchema = 2;
} // namespace

Transaction::Transaction(Database& usedDatabase, Database::Access access)
    : database(usedDatabase)
{
    const SqlDialect& dialect = database.sqlDialect();
    try {
        if (access == Database::Access::Read)
            Statement(database, dialect.beginReading).run();
        else
            for (const QString& begin : dialect.beginWriting)
                Statement(database, begin).run();
        checkTables(access);
    } catch (const DatabaseError&) {
        QSqlQuery(database.connection()).exec("ROLLBACK");
        throw;
    }
}

Transaction::~Transaction()
{
    if (!isOver)
        QSqlQuery(database.connection()).exec("ROLLBACK");
}

void Transaction::commit()
{
    Statement(database, "COMMIT").run();
    isOver = true;
}

void Transaction::checkTables(Database::Access access)
{
    using Kind = DatabaseError::Kind;
    const int version = findVersion();
    if (version > newestSchema)
        throw DatabaseError(
            Kind::NewerSchema,
            QString("the database was made by a newer zorvi_yield (its tables have version %1, "
                    "this program knows version %2); install the newer one")
                .arg(version)
                .arg(newestSchema));
    if (version == newestSchema)
        return;
    if (access == Database::Access::Read)
        throw DatabaseError(Kind::Unusable,
                            version == 0
                                ? "the database holds no attempts yet; \"import\" puts them there"
                                : "the database was made by an older zorvi_yield; \"import\" "
                                  "carries it over, after that every command reads it");
    run(version == 0 ? ":/store/schema.sql" : ":/store/upgrade.sql");
    if (version != 0) // version 1 grouped by other rules
        for (const StationRow& station : StationRows::stations(database))
            StationRows(database, station).writeAgain();
}

/// 0 without tables.
int Transaction::findVersion()
{
    Statement find(database, database.sqlDialect().findSchema);
    find.run();
    if (!find.next())
        return 0;
    Statement select(database, "SELECT version FROM schema_version");
    select.run();
    return select.next() ? select.number(0) : 0;
}

void Transaction::run(const char* resource)
{
    Q_INIT_RESOURCE(store);
    QFile file(resource);
    file.open(QIODevice::ReadOnly);
    const QString statements = QString::fromUtf8(file.readAll());
    for (const QString& statement : statements.split(";\n", Qt::SkipEmptyParts))
        Statement(database, statement).run();
}
