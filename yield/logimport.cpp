// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logimport.h"

#include "yield/attempttext.h"
#include "yield/database.h"
#include "yield/logfiles.h"

QString logimport::refusal(const QString& path, const QString& reason)
{
    return QStringLiteral("%1: not imported: %2")
        .arg(attempttext::printable(path), attempttext::printable(reason));
}

QString logimport::summary(const StoreCounts& counts, int refused)
{
    return QStringLiteral("%1 logs: %2 new, %3 already known, %4 without any mark, %5 refused")
        .arg(counts.added + counts.known + counts.notAttempt + refused)
        .arg(counts.added)
        .arg(counts.known)
        .arg(counts.notAttempt)
        .arg(refused);
}

int logimport::run(const ImportRequest& request, QTextStream& out, QTextStream& errors)
{
    Database database(request.database, Database::Access::Write);
    if (!database.isOpen()) {
        errors << database.problem() << Qt::endl;
        return 2;
    }
    StoreCounts counts;
    int refused = 0;
    QString error;
    std::vector<StationLog> batch;
    const auto storeBatch = [&] {
        const bool stored =
            batch.empty() || attemptstore::store(database, request.station, batch, counts, error);
        batch.clear();
        return stored;
    };
    bool isStored = true;
    for (const QString& path : request.paths)
        for (const QString& file : logfiles::filesOf(path)) {
            QString reason;
            if (auto log = logfiles::read(file, reason)) {
                batch.push_back(std::move(*log));
            } else {
                errors << refusal(file, reason) << Qt::endl;
                ++refused;
            }
            if (batch.size() >= batchSize && !(isStored = storeBatch()))
                break;
        }
    if (isStored)
        isStored = storeBatch();
    out << summary(counts, refused) << Qt::endl;
    if (!isStored) {
        errors << QStringLiteral("the database failed: %1; import again, what is in it stays")
                      .arg(error)
               << Qt::endl;
        return 2;
    }
    return refused == 0 ? 0 : 1;
}
