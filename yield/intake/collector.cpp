// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/intake/collector.h"

#include "yield/intake/formerspool.h"
#include "yield/intake/messages.h"
#include "yield/logs/logfiles.h"
#include "yield/logs/printabletext.h"
#include "yield/store/database.h"
#include "yield/store/schema.h"

#include <QFileInfo>

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

namespace
{
using namespace std::chrono_literals;

constexpr auto scanPause = 1s;
constexpr auto databasePause = 2s;
constexpr auto maxRetryPause = 60s;
constexpr auto makeOutboxPause = 60s;
constexpr qint64 hourMs = 3600000;

void printCounts(const StoreCounts& counts)
{
    if (counts.added > 0)
        messages::print(QString("new logs: %1").arg(counts.added));
    logimport::printWarnings(counts);
}
} // namespace

Collector::Collector(const CollectRequest& whatToCollect)
    : request(whatToCollect)
    , outbox(whatToCollect.logs)
{
}

void Collector::run()
{
    for (;;) {
        std::chrono::seconds pause = scanPause;
        try {
            pass();
            noteAvailable();
        } catch (const DatabaseError& error) {
            if (error.kind() == DatabaseError::Kind::Unusable && !isMigrated)
                throw;
            noteUnavailable(error.text());
            pause = databasePause;
        }
        std::this_thread::sleep_for(pause);
    }
}

Collector::Result Collector::pass()
{
    hasProblem = false;
    bool hasOutbox = false;
    QStringList names;
    try {
        makeOutbox();
        names = dueLogs();
        hasOutbox = true;
        noteOutbox({});
    } catch (const OutboxError& error) {
        noteOutbox(QString::fromUtf8(error.what()));
    }
    // Open only while there is something to do: no connection is left behind, and another file in
    // the place of the database is the database from then on.
    std::unique_ptr<Database> database;
    if (!isAvailable || !names.isEmpty() || (hasOutbox && isImportDue))
        database = openDatabase();
    if (!hasOutbox)
        return Result::NoOutbox;
    // Before anything is moved to Stored, whose first file tells the next start that this is done.
    if (isImportDue)
        importLogs(*database);
    QStringList paths;
    for (const QString& name : qAsConst(names))
        paths << outbox.pathOf(name);
    if (!paths.isEmpty())
        logimport::store(*database, request.station, paths,
                         [this](const logimport::Batch& batch) { finish(batch); });
    return hasProblem ? Result::ProblemsFound : Result::Done;
}

/// At the start, and where LOGS has stood without an outbox for a minute: the empty folder of a
/// missing mount gets none at once.
void Collector::makeOutbox()
{
    // The minute begins again while LOGS is missing, or has an outbox.
    const auto makeAt = std::exchange(makeOutboxAt, QDeadlineTimer(makeOutboxPause));
    const bool isMissing = !outbox.exists();
    if (isMissing) {
        makeOutboxAt = makeAt;
        if (!makeAt.hasExpired())
            throw OutboxError(outbox.path() + " is missing; it is made in a minute");
    }
    outbox.make();
    if (isMissing || !hadOutbox)
        isImportDue = !outbox.hasStored();
    hadOutbox = true;
}

/// False while nothing came. A folder that once held very many files takes milliseconds to list
/// for ever after.
bool Collector::isScanDue()
{
    const auto previousChange =
        std::exchange(outboxChangedAt, QFileInfo(outbox.path()).lastModified());
    passesSinceChange = outboxChangedAt == previousChange ? passesSinceChange + 1 : 0;
    // Once more after a change, as another file may have come in the same tick of the clock; and
    // now and then, for a file system that does not note changes.
    return hasPending || passesSinceChange < 2 || passesSinceChange % 10 == 0;
}

/// The pending logs but those that are tried again later.
QStringList Collector::dueLogs()
{
    if (!isScanDue())
        return {};
    const QStringList names = outbox.pending();
    hasPending = !names.isEmpty();
    QStringList due;
    QHash<QString, Retry> pendingRetries;
    for (const QString& name : names) {
        const auto retry = retries.constFind(name);
        if (retry != retries.constEnd())
            pendingRetries.insert(name, *retry);
        if (retry == retries.constEnd() || retry->next.hasExpired())
            due << name;
    }
    retries = pendingRetries;
    return due;
}

/// The first time the database is made or migrated; later it must be there.
std::unique_ptr<Database> Collector::openDatabase()
{
    if (isMigrated)
        return std::make_unique<Database>(request.database, Database::Access::Read);
    auto database = std::make_unique<Database>(request.database, Database::Access::Write);
    schema::migrate(*database);
    attemptstore::store(*database, request.station, {}); // known from now on, also without a log
    hasProblem = !formerspool::store(*database, request.database, request.spool) || hasProblem;
    isMigrated = true;
    return database;
}

/// What was tested before there was an outbox.
void Collector::importLogs(Database& database)
{
    logimport::store(database, request.station, logfiles::filesOf(request.logs),
                     [this](const logimport::Batch& batch) {
                         printCounts(batch.counts);
                         hasProblem = logimport::printProblems(batch) > 0 || hasProblem;
                     });
    isImportDue = false;
}

void Collector::finish(const logimport::Batch& batch)
{
    printCounts(batch.counts);
    for (const QString& path : batch.stored)
        moveLog(path);
    for (const auto& problem : batch.rejected)
        moveLog(problem.path, problem.reason);
    for (const auto& problem : batch.unreadable)
        postpone(QFileInfo(problem.path).fileName(), problem.reason);
}

/// To Stored, or to Rejected if there is a reason.
void Collector::moveLog(const QString& path, QString rejection)
{
    const QString name = QFileInfo(path).fileName();
    try {
        if (rejection.isEmpty() && outbox.hasStored(name))
            rejection = "Stored has a file of this name already";
        if (rejection.isEmpty()) {
            outbox.moveToStored(name);
        } else if (outbox.reject(name, rejection)) {
            messages::warn(QString("rejected: %1: %2").arg(path, printableText(rejection)));
            hasProblem = true;
        }
    } catch (const OutboxError& error) {
        postpone(name, QString::fromUtf8(error.what()));
    }
}

/// The log stays in the outbox; the pauses between two tries grow to a minute.
void Collector::postpone(const QString& name, const QString& reason)
{
    Retry& retry = retries[name];
    if (retry.pause == 0s)
        messages::warn(
            QString("%1 stays pending: %2").arg(outbox.pathOf(name), printableText(reason)));
    retry.pause = std::clamp<std::chrono::seconds>(2 * retry.pause, scanPause, maxRetryPause);
    retry.next.setRemainingTime(retry.pause);
    hasProblem = true;
}

void Collector::noteOutbox(const QString& problem)
{
    if (problem == outboxProblem)
        return;
    outboxProblem = problem;
    if (problem.isEmpty())
        messages::print("collecting " + outbox.path());
    else
        messages::warn(problem);
}

void Collector::noteUnavailable(const QString& reason)
{
    isAvailable = false;
    if (unavailableSince.isValid() && !unavailableSince.hasExpired(hourMs))
        return;
    messages::warn("database unavailable: " + reason);
    unavailableSince.start();
}

void Collector::noteAvailable()
{
    if (unavailableSince.isValid())
        messages::print("database available again");
    unavailableSince.invalidate();
    isAvailable = true;
}
