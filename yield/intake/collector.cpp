// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/intake/collector.h"

#include "yield/logs/messages.h"
#include "yield/store/database.h"
#include "yield/store/schema.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <thread>

namespace
{
using namespace std::chrono_literals;

constexpr std::chrono::seconds scanPause = 1s;
constexpr int maxSkippedScans = 10;
constexpr std::chrono::seconds databasePause = 2s;
constexpr std::chrono::seconds maxRetryPause = 60s;
constexpr std::chrono::seconds makeOutboxPause = 60s;
constexpr std::chrono::seconds warningPause = 1h;

void printAdded(const StoreCounts& counts)
{
    if (counts.added > 0)
        messages::print(QString("new logs: %1").arg(counts.added));
}
} // namespace

Collector::Collector(const CollectRequest& whatToCollect)
    : request(whatToCollect)
    , outbox(whatToCollect.logs)
{
}

void Collector::run()
{
    QString printed; // of the outbox, once for each change
    for (;;) {
        auto pause = scanPause;
        QString state = printed;
        try {
            pass();
            if (nextWarning)
                messages::print("database available again");
            nextWarning.reset();
            state = "collecting " + outbox.path();
        } catch (const DatabaseError& error) {
            if (error.kind == DatabaseError::Kind::Unusable && !isMigrated)
                throw;
            if (!nextWarning || nextWarning->hasExpired()) {
                messages::warn(QString("database unavailable: ") + error.what());
                nextWarning = QDeadlineTimer(warningPause);
            }
            pause = databasePause;
        } catch (const std::runtime_error& error) {
            state = error.what();
        }
        if (state != printed)
            messages::warn(state);
        printed = state;
        std::this_thread::sleep_for(pause);
    }
}

bool Collector::pass()
{
    hasProblem = false;
    makeOutbox();
    const QStringList logs = dueLogs();
    const bool isImportDue = !outbox.exists("/Stored");
    // Opened only when there is something to do: a file that was replaced meanwhile is used then.
    if (logs.isEmpty() && !isImportDue && isMigrated && !nextWarning)
        return postponed.isEmpty();
    // The first time the database is made or migrated; later it must be there.
    Database database(request.database,
                      isMigrated ? Database::Access::Read : Database::Access::Write);
    if (!isMigrated)
        prepare(database);
    if (isImportDue) {
        // Stored is made when all is committed, so that a kill loses none and no later start
        // repeats it.
        importEarlierLogs(database, request.station, logfiles::filesOf(request.logs));
        outbox.make("/Stored");
    }
    // Some thousand may wait: what is stored is moved before the database can fail.
    int begin = 0;
    do
        finish(
            logimport::store(database, request.station, logs.mid(begin, logimport::maxLogsAtOnce)));
    while ((begin += logimport::maxLogsAtOnce) < logs.size());
    return !hasProblem;
}

/// At the start, and where LOGS has stood without an outbox for a minute: the empty folder of a
/// missing mount gets none at once.
void Collector::makeOutbox()
{
    if (outbox.exists() || !QFileInfo::exists(request.logs))
        makeOutboxAt.setRemainingTime(makeOutboxPause);
    else if (!makeOutboxAt.hasExpired())
        throw std::runtime_error(
            (outbox.path() + " is missing; it is made in a minute").toStdString());
    outbox.make();
    outbox.make("/Rejected");
}

/// The pending logs but those that are tried again later, in pauses that grow to a minute.
QStringList Collector::dueLogs()
{
    // A folder that once held very many files stays slow to list: an empty outbox is not, while its
    // time is unchanged. Every tenth scan lists it all the same: a file that came just after the
    // last listing may not have changed the time.
    const QDateTime changedAt = QFileInfo(outbox.path()).lastModified();
    if (changedAt == emptySince && ++skippedScans < maxSkippedScans)
        return {};
    skippedScans = 0;
    QStringList logs = outbox.logs();
    emptySince = logs.isEmpty() ? changedAt : QDateTime();
    postponed.intersect(QSet<QString>(logs.begin(), logs.end()));
    if (retryAt.hasExpired()) {
        retryPause = postponed.isEmpty() ? scanPause : std::min(2 * retryPause, maxRetryPause);
        retryAt.setRemainingTime(retryPause);
        return logs;
    }
    const auto isPostponed = [this](const QString& log) { return postponed.contains(log); };
    logs.erase(std::remove_if(logs.begin(), logs.end(), isPostponed), logs.end());
    return logs;
}

/// Makes or migrates the database, and imports what waits in a spool of version 1.2.0. Once after
/// each start: what is stored already is a duplicate.
void Collector::prepare(Database& database)
{
    schema::migrate(database);
    for (const QFileInfo& folder :
         QDir(request.spool + "/v1").entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot))
        importSpool(database, folder.filePath());
    isMigrated = true;
}

/// What version 1.2.0 left in a folder of its spool: pending logs, those that the tables rejected,
/// and a file that names the database and the station.
void Collector::importSpool(Database& database, const QString& folder)
{
    QStringList logs;
    for (const char* kind : {"/logs", "/aside"})
        for (const QFileInfo& file : QDir(folder + kind).entryInfoList(QDir::Files))
            if (file.suffix() != "reason")
                logs << file.filePath();
    QFile file(folder + "/about.json");
    file.open(QIODevice::ReadOnly);
    const QJsonObject about = QJsonDocument::fromJson(file.readAll()).object();
    const QString ofSpool = about["database"].toString();
    const bool isSameDatabase =
        ofSpool == request.database || ofSpool == QFileInfo(request.database).absoluteFilePath();
    if (isSameDatabase)
        importEarlierLogs(database, {about["station"].toString(), about["tests_18"].toBool()},
                          logs);
    else if (!logs.isEmpty())
        messages::warn(folder + ": not imported: its logs are for the database " + ofSpool);
}

void Collector::importEarlierLogs(Database& database, const Station& station,
                                  const QStringList& files)
{
    const auto result = logimport::store(database, station, files);
    printAdded(result.counts);
    logimport::printProblems(result);
    hasProblem = hasProblem || !result.problems.empty();
}

void Collector::finish(const logimport::Result& result)
{
    printAdded(result.counts);
    for (const QString& log : result.stored)
        moveLog(log, {});
    for (const auto& problem : result.problems)
        if (problem.isRejected)
            moveLog(problem.path, problem.reason);
        else
            postpone(problem.path, problem.reason);
}

/// To Stored, or to Rejected if there is a reason.
void Collector::moveLog(const QString& log, QString rejection)
{
    try {
        if (rejection.isEmpty() && !outbox.moveToStored(log))
            rejection = "Stored has a file of this name already";
        if (!rejection.isEmpty() && outbox.reject(log, rejection)) {
            messages::warn(QString("rejected: %1: %2").arg(log, printableText(rejection)));
            hasProblem = true;
        }
    } catch (const std::runtime_error& error) {
        postpone(log, error.what());
    }
}

void Collector::postpone(const QString& log, const QString& reason)
{
    hasProblem = true;
    if (postponed.contains(log))
        return;
    postponed.insert(log);
    messages::warn(QString("%1 stays pending: %2").arg(log, printableText(reason)));
}
