// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/transaction.h"

#include "yield/store/sqldialect.h"
#include "yield/store/statement.h"

#include <QFile>

namespace
{
constexpr int newestSchema = 1;
} // namespace

Transaction::Transaction(Database& usedDatabase, Database::Access access)
    : database(usedDatabase)
{
    const SqlDialect& dialect = database.sqlDialect();
    const bool isWriting = access == Database::Access::Write;
    try {
        for (const QString& begin :
             isWriting ? dialect.beginWriting : QStringList{dialect.beginReading})
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
    const int version = schemaVersion();
    if (version == 0 && access == Database::Access::Read)
        throw DatabaseError(DatabaseError::Kind::Unusable,
                            "the database holds no attempts yet; \"import\" puts them there");
    if (version == 0)
        makeTables();
    if (version > newestSchema)
        throw DatabaseError(
            DatabaseError::Kind::NewerSchema,
            QString("the database was made by a newer zorvi_yield (its tables have version %1, "
                    "this program knows version %2); install the newer one")
                .arg(version)
                .arg(newestSchema));
}

void Transaction::makeTables()
{
    Q_INIT_RESOURCE(store);
    QFile schema(":/store/schema.sql");
    schema.open(QIODevice::ReadOnly);
    for (const QString& statement :
         QString::fromUtf8(schema.readAll()).split(";\n", Qt::SkipEmptyParts))
        Statement(database, statement).run();
}

/// 0 without tables.
int Transaction::schemaVersion()
{
    Statement find(database, database.sqlDialect().findSchema);
    find.run();
    if (!find.next())
        return 0;
    Statement version(database, "SELECT version FROM schema_version");
    version.run();
    return version.next() ? version.number(0) : 0;
}
