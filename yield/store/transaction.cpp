// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/transaction.h"

#include "yield/store/sqldialect.h"
#include "yield/store/statement.h"
#include "yield/store/stationrows.h"

#include <QFile>

#include <algorithm>

namespace
{
constexpr int newestSchema = 2;

/// By the rules of this version, which know runs that ended early.
void regroupAll(Database& database)
{
    for (const StationRow& station : StationRows::stations(database)) {
        StationRows rows(database, station);
        rows.forEachUnit([&](const QString& serial, const UnitLogs& logs) {
            const auto& attempts = logs.grouped.attempts;
            const auto endsEarly = [&](const attemptrules::Save& attempt) {
                return attemptrules::outcomeOf(attempt.marks, station.tests18).endedAt.has_value();
            };
            if (std::any_of(attempts.begin(), attempts.end(), endsEarly))
                rows.writeAgain(serial, logs);
            else
                rows.group(serial, logs);
        });
    }
}
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
    version = findVersion();
    if (version > newestSchema)
        throw DatabaseError(
            DatabaseError::Kind::NewerSchema,
            QString("the database was made by a newer zorvi_yield (its tables have version %1, "
                    "this program knows version %2); install the newer one")
                .arg(version)
                .arg(newestSchema));
    if (access == Database::Access::Write && version < newestSchema) {
        run(version == 0 ? ":/store/schema.sql" : ":/store/upgrade.sql");
        if (version == 1)
            regroupAll(database);
        version = newestSchema;
    }
    if (version == 0)
        throw DatabaseError(DatabaseError::Kind::Unusable,
                            "the database holds no attempts yet; \"import\" puts them there");
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
