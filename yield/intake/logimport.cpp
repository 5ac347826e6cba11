// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/intake/logimport.h"

#include "yield/intake/messages.h"
#include "yield/logs/logfiles.h"
#include "yield/logs/printabletext.h"
#include "yield/store/database.h"

#include <QFileInfo>

namespace
{
constexpr int batchSize = 1000;

/// A log that the tables refuse is found by halves, so that it stops no other.
void storeLogs(Database& database, const Station& station, const QStringList& paths,
               const std::vector<LogFile>& logs, logimport::Batch& batch)
{
    try {
        batch.counts += attemptstore::store(database, station, logs);
        batch.stored << paths;
    } catch (const DatabaseError& error) {
        if (error.kind() != DatabaseError::Kind::Data || paths.isEmpty())
            throw;
        if (paths.size() == 1) {
            batch.problems.push_back({paths[0], error.text(), true});
            return;
        }
        const int half = paths.size() / 2;
        const auto middle = logs.begin() + half;
        storeLogs(database, station, paths.mid(0, half), {logs.begin(), middle}, batch);
        storeLogs(database, station, paths.mid(half), {middle, logs.end()}, batch);
    }
}
} // namespace

std::vector<QStringList> logimport::batches(const QStringList& files)
{
    std::vector<QStringList> batches{files.mid(0, batchSize)};
    for (int begin = batchSize; begin < files.size(); begin += batchSize)
        batches.push_back(files.mid(begin, batchSize));
    return batches;
}

logimport::Batch logimport::store(Database& database, const Station& station,
                                  const QStringList& files)
{
    Batch batch;
    QStringList paths;
    std::vector<LogFile> logs;
    for (const QString& path : files) {
        QString reason;
        const auto bytes = logfiles::bytesOf(path, reason);
        const auto log = bytes ? stationlog::read(*bytes, reason) : std::nullopt;
        if (log) {
            paths << path;
            logs.push_back({*log, OutboxName::read(QFileInfo(path).fileName())});
        } else if (bytes || !logfiles::isGone(path)) {
            batch.problems.push_back({path, reason, bytes.has_value()});
        }
    }
    storeLogs(database, station, paths, logs, batch);
    return batch;
}

int logimport::printProblems(const Batch& batch)
{
    for (const Problem& problem : batch.problems)
        messages::warn(QString("%1: not imported: %2")
                           .arg(printableText(problem.path), printableText(problem.reason)));
    return static_cast<int>(batch.problems.size());
}

void logimport::printWarnings(const StoreCounts& counts)
{
    if (counts.future > 0)
        messages::warn(QString("%1 logs have a date in the future: is the station's clock right?")
                           .arg(counts.future));
    if (counts.otherStations > 0)
        messages::warn(QString("%1 logs are known at another station too: was --station mistyped? "
                               "\"station rename\" corrects it")
                           .arg(counts.otherStations));
}
