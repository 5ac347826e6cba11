// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/intake/storeworker.h"

#include "yield/intake/messages.h"
#include "yield/logs/logfiles.h"
#include "yield/store/database.h"
#include "yield/store/schema.h"

#include <QFile>

#include <utility>

#include <sys/stat.h>

namespace
{
constexpr std::chrono::milliseconds stopTime{500};
constexpr int retryMs = 2000;
constexpr int hourMs = 3600000;

/// 0 if it is not there.
ino_t numberOf(const QString& path)
{
    struct stat status = {};
    stat(QFile::encodeName(path).constData(), &status);
    return status.st_ino;
}
} // namespace

StoreWorker::StoreWorker(const ImportRequest& whatToStore, const std::vector<Spool>& storedSpools)
    : request(whatToStore)
    , spools(storedSpools)
    , thread(std::async(std::launch::async, &StoreWorker::run, this))
{
}

void StoreWorker::wake(bool areFoldersMeant)
{
    if (areFoldersMeant)
        areFoldersDue = true;
    news.release();
}

QStringList StoreWorker::takeRefused()
{
    const std::lock_guard<std::mutex> guard(mutex);
    return std::exchange(refused, {});
}

bool StoreWorker::isOver() const
{
    return thread.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
}

bool StoreWorker::stop()
{
    isStopping = true;
    news.release();
    return thread.wait_for(stopTime) == std::future_status::ready;
}

void StoreWorker::run()
{
    while (!isStopping && tryToStore()) {
        news.tryAcquire(1, retryMs);
        news.tryAcquire(news.available()); // one try for all of them
    }
    database.reset(); // on the thread that opened it
}

/// False if another try is of no use.
bool StoreWorker::tryToStore()
{
    try {
        openDatabase();
        // The spool first: its logs may be nowhere else.
        for (const Spool& spool : spools)
            if (!spool.waiting().isEmpty())
                storeSpool(spool);
        storeFolders();
    } catch (const DatabaseError& error) {
        database.reset();
        if (error.kind() == DatabaseError::Kind::Unusable && !wasOpen) {
            messages::warn(error.text());
            return false;
        }
        noteAway(error.text());
    }
    return true;
}

void StoreWorker::openDatabase()
{
    const ino_t number = numberOf(request.database);
    const bool isGone = fileNumber != 0 && number == 0; // with a share, for instance
    if (isGone || (database && number != fileNumber))   // or a backup is in its place
        throw DatabaseError(DatabaseError::Kind::Unavailable,
                            request.database + (isGone ? " is gone" : " is another file now"));
    if (database)
        return;
    database = std::make_unique<Database>(request.database, Database::Access::Write);
    schema::migrate(*database);
    fileNumber = numberOf(request.database);
    wasOpen = true;
}

void StoreWorker::storeSpool(const Spool& spool)
{
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
    logimport::store(*database, spool.station, spool.waiting(), listener);
}

void StoreWorker::storeFolders()
{
    if (!areFoldersDue.exchange(false))
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
    if (sinceAway.isValid())
        messages::tell("the database is back");
    sinceAway.invalidate();
    if (counts.added > 0)
        messages::tell(QString("new: %1").arg(counts.added));
    for (const QString& doubt : logimport::doubtsAbout(counts))
        messages::warn(doubt);
}

void StoreWorker::noteAway(const QString& reason)
{
    areFoldersDue = true; // it may come back as it was some time ago
    if (sinceAway.isValid() && !sinceAway.hasExpired(hourMs))
        return;
    messages::warn(QString("the database is away: %1").arg(reason));
    sinceAway.start();
}
