// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/intake/logimport.h"

#include "yield/logs/logfiles.h"
#include "yield/logs/printabletext.h"
#include "yield/store/database.h"

namespace
{
struct Batch {
    std::vector<StationLog> logs;
    QStringList refusals;
};

/// named: what the user named, which is refused if it is not there.
Batch readBatch(const QStringList& files, int begin, const QStringList& named)
{
    Batch batch;
    for (const QString& file : files.mid(begin, logimport::batchSize)) {
        QString reason;
        if (auto log = logfiles::read(file, reason))
            batch.logs.push_back(std::move(*log));
        else if (!logfiles::isGone(file) || named.contains(file))
            batch.refusals << logimport::refusal(file, reason);
    }
    return batch;
}
} // namespace

QString logimport::refusal(const QString& path, const QString& reason)
{
    return QStringLiteral("%1: not imported: %2").arg(printableText(path), printableText(reason));
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
    QStringList files;
    for (const QString& path : request.paths)
        files += logfiles::filesOf(path);

    StoreCounts counts;
    int refused = 0;
    try {
        // Also without a log: the database remembers what the station tests.
        for (int begin = 0; begin == 0 || begin < files.size(); begin += batchSize) {
            const Batch batch = readBatch(files, begin, request.paths);
            for (const QString& refusal : batch.refusals)
                errors << refusal << Qt::endl;
            refused += batch.refusals.size();
            counts += attemptstore::store(database, request.station, batch.logs);
        }
    } catch (const DatabaseError& error) {
        out << summary(counts, refused) << Qt::endl;
        errors << QString("the database failed: %1; what is in it stays, import again")
                      .arg(error.text())
               << Qt::endl;
        return exitstatus::failed;
    }
    out << summary(counts, refused) << Qt::endl;
    return refused == 0 ? 0 : exitstatus::incomplete;
}
