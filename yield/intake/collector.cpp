// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/intake/collector.h"

#include "yield/intake/messages.h"
#include "yield/logs/printabletext.h"
#include "yield/store/database.h"
#include "yield/store/schema.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <optional>
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

void printCounts(const StoreCounts& counts)
{
    if (counts.added > 0)
        messages::print(QString("new logs: %1").arg(counts.added));
    logimport::printWarnings(counts);
}

/// What version 1.2.0 left in a folder of its spool: a file that names the database and the
/// station, the logs that waited, and those that were set aside because the tables refused them.
std::optional<EarlierLogs> readSpool(const QString& folder, const QString& database)
{
    EarlierLogs logs;
    for (const char* kind : {"/logs", "/aside"})
        for (const QFileInfo& file : QDir(folder + kind).entryInfoList(QDir::Files))
            if (file.suffix() != "reason")
                logs.files << file.filePath();
    QFile file(folder + "/about.json");
    file.open(QIODevice::ReadOnly);
    const QJsonObject about = QJsonDocument::fromJson(file.readAll()).object();
    logs.station = {about["station"].toString(), about["tests_18"].toBool()};
    const QString location =
        Database::isAddress(database) ? database : QFileInfo(database).absoluteFilePath();
    if (about["database"].toString() == location)
        return logs;
    if (!logs.files.isEmpty())
        messages::warn(folder + ": not imported: its logs are for the database " +
                       about["database"].toString());
    return std::nullopt;
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
        auto pause = scanPause;
        try {
            pass();
            if (!isAvailable)
                messages::print("database available again");
            isAvailable = true;
            printState("collecting " + outbox.path());
        } catch (const DatabaseError& error) {
            if (error.kind() == DatabaseError::Kind::Unusable && !isMigrated)
                throw;
            if (isAvailable || nextWarning.hasExpired()) {
                messages::warn("database unavailable: " + error.text());
                nextWarning.setRemainingTime(warningPause);
            }
            isAvailable = false;
            pause = databasePause;
        } catch (const std::runtime_error& error) {
            printState(QString::fromUtf8(error.what()));
        }
        std::this_thread::sleep_for(pause);
    }
}

bool Collector::pass()
{
    hasProblem = false;
    makeOutbox();
    const QStringList logs = dueLogs();
    const bool isImportDue = !outbox.hasStoredFolder();
    // Open only while there is something to do: no connection is left behind, and another file in
    // the place of the database is the database from then on.
    if (logs.isEmpty() && !isImportDue && isMigrated && isAvailable)
        return postponed.isEmpty();
    const auto database = openDatabase();
    if (isImportDue) {
        // Stored is made when all is committed, so that a kill loses none, and a later start does
        // not import a log whose run is in the outbox.
        importEarlierLogs(*database, {request.station, logfiles::filesOf(request.logs)});
        outbox.makeStoredFolder();
    }
    for (const QStringList& files : logimport::batches(logs))
        finish(logimport::store(*database, request.station, files));
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
}

/// The pending logs but those that are tried again later. The pauses between two tries grow to a
/// minute.
QStringList Collector::dueLogs()
{
    // A folder that once held very many files takes milliseconds to list for ever after. Listed now
    // and then all the same: two changes may have the same time.
    const QDateTime changedAt = QFileInfo(outbox.path()).lastModified();
    if (changedAt == emptySince && ++skippedScans < maxSkippedScans)
        return {};
    QStringList logs = outbox.pending();
    // Once more after a change: another file may have come in the same tick of the clock.
    skippedScans = changedAt == emptySince ? 0 : maxSkippedScans - 1;
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

/// The first time the database is made or migrated; later it must be there.
std::unique_ptr<Database> Collector::openDatabase()
{
    if (isMigrated)
        return std::make_unique<Database>(request.database, Database::Access::Read);
    auto database = std::make_unique<Database>(request.database, Database::Access::Write);
    schema::migrate(*database);
    // At each start: what is stored already is a duplicate.
    for (const QFileInfo& folder :
         QDir(request.spool + "/v1").entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot))
        if (const auto logs = readSpool(folder.filePath(), request.database))
            importEarlierLogs(*database, *logs);
    isMigrated = true;
    return database;
}

void Collector::importEarlierLogs(Database& database, const EarlierLogs& logs)
{
    for (const QStringList& files : logimport::batches(logs.files)) {
        const auto batch = logimport::store(database, logs.station, files);
        printCounts(batch.counts);
        hasProblem = logimport::printProblems(batch) > 0 || hasProblem;
    }
}

void Collector::finish(const logimport::Batch& batch)
{
    printCounts(batch.counts);
    for (const QString& log : batch.stored)
        moveLog(log, {});
    for (const auto& problem : batch.problems)
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
        postpone(log, QString::fromUtf8(error.what()));
    }
}

/// The log stays in the outbox.
void Collector::postpone(const QString& log, const QString& reason)
{
    hasProblem = true;
    if (postponed.contains(log))
        return;
    postponed.insert(log);
    messages::warn(QString("%1 stays pending: %2").arg(log, printableText(reason)));
}

/// Of the outbox, once for each change.
void Collector::printState(const QString& state)
{
    if (state != outboxState)
        messages::warn(state);
    outboxState = state;
}
