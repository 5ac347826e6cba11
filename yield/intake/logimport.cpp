// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/intake/logimport.h"

#include "yield/logs/messages.h"
#include "yield/store/database.h"

namespace
{
/// A log that the tables refuse is found by halves, so that it stops no other.
void storeLogs(Database& database, const Station& station, const std::vector<LogFile>& logs,
               logimport::Result& result)
{
    try {
        attemptstore::store(database, station, logs, result.counts);
        for (const LogFile& log : logs)
            result.stored << log.path;
    } catch (const DatabaseError& error) {
        if (error.kind != DatabaseError::Kind::Data || logs.empty())
            throw;
        if (logs.size() == 1) {
            result.problems.push_back({logs[0].path, error.what(), true});
            return;
        }
        const auto middle = logs.begin() + static_cast<std::ptrdiff_t>(logs.size() / 2);
        storeLogs(database, station, {logs.begin(), middle}, result);
        storeLogs(database, station, {middle, logs.end()}, result);
    }
}

void printWarnings(const StoreCounts& counts)
{
    if (counts.future > 0)
        messages::warn(QString("%1 logs have a date in the future: is the station's clock right?")
                           .arg(counts.future));
    if (counts.otherStations > 0)
        messages::warn(QString("%1 logs are known at another station too: was --station mistyped? "
                               "\"station rename\" corrects it")
                           .arg(counts.otherStations));
}
} // namespace

logimport::Result logimport::store(Database& database, const Station& station,
                                   const QStringList& files)
{
    Result result;
    std::vector<LogFile> logs;
    for (const QString& path : files) {
        try {
            logs.push_back(logfiles::read(path));
        } catch (const NotALog& error) {
            result.problems.push_back({path, error.what(), true});
        } catch (const std::runtime_error& error) {
            if (!logfiles::isGone(path))
                result.problems.push_back({path, error.what(), false});
        }
        if (static_cast<int>(logs.size()) == maxLogsAtOnce) {
            storeLogs(database, station, logs, result);
            logs.clear();
        }
    }
    if (!logs.empty() || files.isEmpty())
        storeLogs(database, station, logs, result);
    printWarnings(result.counts);
    return result;
}

void logimport::printProblems(const Result& result)
{
    for (const Problem& problem : result.problems)
        messages::warn(QString("%1: not imported: %2")
                           .arg(printableText(problem.path), printableText(problem.reason)));
}
