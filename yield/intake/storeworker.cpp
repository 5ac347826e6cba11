// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/intake/storeworker.h"

#include "yield/intake/messages.h"
#include "yield/logs/logfiles.h"
#include "yield/store/database.h"

#include <QFile>

#include <utility>

#include <sys/stat.h>

namespace
{
constexpr std::chrono::seconds retryTime{2};
constexpr int hourMs = 3600000;

/// 0 if it is not there.
ino_t numberOf(const QString& path)
{
    struct stat status = {};
    stat(QFile::encodeName(path).constData(), &status);
    return status.st_ino;
}
} // namespace

StoreWorker::StoreWorker(const ImportRequest& whatToStore, const QString& spoolRoot)
    : request(whatToStore)
    , spoolLocation(spoolRoot)
{
}

void StoreWorker::start()
{
    thread = std::async(std::launch::async, &StoreWorker::run, this);
}

void StoreWorker::wake(bool areFoldersMeant)
{
    const std::lock_guard<std::mutex> guard(mutex);
    isDue = true;
    areFoldersDue = areFoldersDue || areFoldersMeant;
    change.notify_all();
}

QStringList StoreWorker::takeRefused()
{
    const std::lock_guard<std::mutex> guard(mutex);
    return std::exchange(refused, {});
}

void StoreWorker::stop()
{
    const std::lock_guard<std::mutex> guard(mutex);
    isStopping = true;
    change.notify_all();
}

bool StoreWorker::isOver(std::chrono::milliseconds patience) const
{
    return thread.wait_for(patience) == std::future_status::ready;
}

void StoreWorker::run()
{
    for (bool goesOn = true; goesOn && tryToStore();) {
        std::unique_lock<std::mutex> guard(mutex);
        change.wait_for(guard, retryTime, [this] { return isStopping || (isDue && !isAway); });
        goesOn = !isStopping;
        isDue = false;
    }
    database.reset();
}

/// False if another try is of no use.
bool StoreWorker::tryToStore()
{
    try {
        openDatabase();
        // The spool first: its logs may be nowhere else.
        for (const Spool& spool : Spool::below(spoolLocation))
            if (spool.database == request.database)
                storeSpool(spool);
        storeFolders();
    } catch (const DatabaseError& error) {
        database.reset();
        if (error.kind() == DatabaseError::Kind::Unusable && !wasOpen) {
            messages::warn(error.text());
            return false;
        }
        lose(error.text());
    }
    return true;
}

void StoreWorker::openDatabase()
{
    const bool isFile = !Database::isAddress(request.database);
    const auto away = [&](const QString& what) {
        return DatabaseError(DatabaseError::Kind::Away, request.database + what);
    };
    if (isFile && wasOpen && numberOf(request.database) == 0)
        throw away(" is gone"); // with a share, for instance
    if (isFile && database && numberOf(request.database) != fileNumber)
        throw away(" is another file now"); // a backup in its place
    if (database)
        return;
    database = std::make_unique<Database>(request.database, Database::Access::Write);
    fileNumber = numberOf(request.database);
    wasOpen = true;
}

void StoreWorker::storeSpool(const Spool& spool)
{
    const QStringList waiting = spool.waiting();
    if (waiting.isEmpty())
        return;
    logimport::Listener listener;
    listener.stored = [&](const QStringList& paths, const StoreCounts& counts) {
        noteStored(counts);
        for (const QString& path : paths)
            QFile::remove(path); // one that comes back after a power failure is known
    };
    listener.refused = [&](const QString& path, const QString& reason) {
        if (!logfiles::isGone(path))
            messages::warn(spool.moveAside(path, reason));
    };
    logimport::store(*database, spool.station, waiting, listener);
}

void StoreWorker::storeFolders()
{
    std::unique_lock<std::mutex> guard(mutex);
    const bool isWanted = std::exchange(areFoldersDue, false);
    guard.unlock();
    if (!isWanted)
        return;
    logimport::Listener listener;
    listener.stored = [&](const QStringList&, const StoreCounts& counts) { noteStored(counts); };
    // The other thread tries it again and names it when it does not change any more.
    listener.refused = [&](const QString& path, const QString&) {
        const std::lock_guard<std::mutex> refusing(mutex);
        refused << path;
    };
    logimport::store(*database, request.station, request.paths, listener);
}

void StoreWorker::noteStored(const StoreCounts& counts)
{
    if (std::exchange(isAway, false))
        messages::tell("the database is back");
    if (counts.added > 0)
        messages::tell(QString("new: %1").arg(counts.added));
}

void StoreWorker::lose(const QString& reason)
{
    if (!isAway || sinceSaid.hasExpired(hourMs)) {
        messages::warn(QString("the database is away: %1").arg(reason));
        sinceSaid.start();
    }
    isAway = true;
    wake(true); // it may come back as it was some time ago
}
