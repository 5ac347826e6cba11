// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/store/attemptreader.h"

#include "yield/store/database.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

namespace
{
bool visitAll(QSqlDatabase& database, const QString& condition, const QVariantList& values,
              const std::function<void(const Attempt&)>& visit, QString& error)
{
    QSqlQuery query(database);
    query.setForwardOnly(true); // otherwise every row stays in memory
    bool done = query.prepare(
        QStringLiteral("SELECT stations.name, stations.tests_18, serial, tested_at, marks "
                       "FROM attempts JOIN stations ON stations.id = station_id %1 "
                       "ORDER BY tested_at, attempts.id")
            .arg(condition));
    for (const QVariant& value : values)
        query.addBindValue(value);
    done = done && query.exec();
    while (done && query.next()) {
        const auto marks = bandmarks::unpacked(query.value(4).toByteArray());
        if (!marks) {
            error = bandmarks::damaged();
            return false;
        }
        visit({query.value(0).toString(), query.value(1).toInt() != 0, query.value(2).toString(),
               query.value(3).toString(), *marks});
    }
    if (query.lastError().isValid())
        error = Database::inWords(query.lastError());
    return error.isEmpty();
}
} // namespace

bool attemptreader::forEach(QSqlDatabase& database,
                            const std::function<void(const Attempt&)>& visit, QString& error)
{
    return visitAll(database, QString(), {}, visit, error);
}

bool attemptreader::forEachOf(QSqlDatabase& database, const QString& serial,
                              const std::function<void(const Attempt&)>& visit, QString& error)
{
    return visitAll(database, QStringLiteral("WHERE serial = ?"), {serial}, visit, error);
}
