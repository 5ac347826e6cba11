// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/transaction.h"

#include "yield/store/sqldialect.h"
#include "yield/store/statement.h"

Transaction::Transaction(Database& usedDatabase, Database::Access access)
    : database(usedDatabase)
{
    const SqlDialect& dialect = database.sqlDialect();
    const bool isReading = access == Database::Access::Read;
    for (const QString& begin : isReading ? dialect.beginReading : dialect.beginWriting)
        Statement(database, begin).run();
}

Transaction::~Transaction()
{
    QSqlQuery(database.connection()).exec("ROLLBACK"); // nothing is left to undo after commit()
}

void Transaction::commit()
{
    Statement(database, "COMMIT").run();
}
