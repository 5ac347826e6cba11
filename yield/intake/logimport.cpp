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
/// So many logs are stored in one transaction: few enough that others wait for a moment only.
constexpr int batchSize = 1000;

struct ReadFile {
    QString path;
    LogFile log;
};

/// The logs among the files; the others go to the batch.
std::vector<ReadFile> readFiles(const QStringList& paths, logimport::Batch& batch)
{
    std::vector<ReadFile> files;
    for (const QString& path : paths) {
        QString reason;
        const auto bytes = logfiles::bytesOf(path, reason);
        const auto log = bytes ? stationlog::read(*bytes, reason) : std::nullopt;
        if (log)
            files.push_back({path, {*log, OutboxName::read(QFileInfo(path).fileName())}});
        else if (bytes)
            batch.rejected.push_back({path, reason});
        else if (!logfiles::isGone(path))
            batch.unreadable.push_back({path, reason});
    }
    return files;
}

/// A log that the tables refuse is found by halves, so that it stops no other.
void storeFiles(Database& database, const Station& station, const std::vector<ReadFile>& files,
                logimport::Batch& batch)
{
    std::vector<LogFile> logs;
    for (const ReadFile& file : files)
        logs.push_back(file.log);
    try {
        batch.counts += attemptstore::store(database, station, logs);
    } catch (const DatabaseError& error) {
        if (error.kind() != DatabaseError::Kind::Data || files.empty())
            throw;
        if (files.size() == 1) {
            batch.rejected.push_back({files.front().path, error.text()});
            return;
        }
        const auto middle = files.begin() + static_cast<std::ptrdiff_t>(files.size() / 2);
        storeFiles(database, station, {files.begin(), middle}, batch);
        storeFiles(database, station, {middle, files.end()}, batch);
        return;
    }
    for (const ReadFile& file : files)
        batch.stored << file.path;
}
} // namespace

void logimport::store(Database& database, const Station& station, const QStringList& files,
                      const std::function<void(const Batch&)>& onBatch)
{
    for (int begin = 0; begin == 0 || begin < files.size(); begin += batchSize) {
        Batch batch;
        const auto logs = readFiles(files.mid(begin, batchSize), batch);
        storeFiles(database, station, logs, batch);
        onBatch(batch);
    }
}

int logimport::printProblems(const Batch& batch)
{
    int count = 0;
    for (const auto& problems : {batch.rejected, batch.unreadable})
        for (const Problem& problem : problems) {
            messages::warn(QString("%1: not imported: %2")
                               .arg(printableText(problem.path), printableText(problem.reason)));
            ++count;
        }
    return count;
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
