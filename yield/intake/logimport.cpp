// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/intake/logimport.h"

#include "yield/intake/messages.h"
#include "yield/logs/printabletext.h"
#include "yield/store/database.h"

namespace
{
constexpr int batchSize = 1000;

/// A log that the tables refuse is found by halves, so that it stops no other.
void storeLogs(Database& database, const Station& station, const std::vector<LogFile>& logs,
               logimport::Batch& batch)
{
    try {
        batch.counts += attemptstore::store(database, station, logs);
        for (const LogFile& log : logs)
            batch.stored << log.path;
    } catch (const DatabaseError& error) {
        if (error.kind() != DatabaseError::Kind::Data || logs.empty())
            throw;
        if (logs.size() == 1) {
            batch.problems.push_back({logs[0].path, error.text(), true});
            return;
        }
        const auto middle = logs.begin() + static_cast<std::ptrdiff_t>(logs.size() / 2);
        storeLogs(database, station, {logs.begin(), middle}, batch);
        storeLogs(database, station, {middle, logs.end()}, batch);
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
    std::vector<LogFile> logs;
    for (const QString& path : files) {
        try {
            logs.push_back(logfiles::read(path));
        } catch (const NotALog& error) {
            batch.problems.push_back({path, error.what(), true});
        } catch (const std::runtime_error& error) {
            if (!logfiles::isGone(path))
                batch.problems.push_back({path, error.what(), false});
        }
    }
    storeLogs(database, station, logs, batch);
    return batch;
}

std::pair<StoreCounts, int> logimport::importFiles(Database& database, const Station& station,
                                                   const QStringList& files)
{
    StoreCounts counts;
    int problems = 0;
    for (const QStringList& batchFiles : batches(files)) {
        const Batch batch = store(database, station, batchFiles);
        counts += batch.counts;
        problems += static_cast<int>(batch.problems.size());
        for (const Problem& problem : batch.problems)
            messages::warn(QString("%1: not imported: %2")
                               .arg(printableText(problem.path), printableText(problem.reason)));
    }
    return {counts, problems};
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
