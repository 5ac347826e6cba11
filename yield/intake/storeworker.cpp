// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/intake/storeworker.h"

#include "yield/intake/messages.h"
#include "yield/logs/logfiles.h"
#include "yield/store/database.h"

#include <QFile>

#include <chrono>
#include <utility>

#include <sys/stat.h>

namespace
{
constexpr std::chrono::seconds retryTime{2};
constexpr std::chrono::milliseconds stopTime{500};
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

StoreWorker::~StoreWorker()
{
    if (thread.joinable())
        thread.join();
}

void StoreWorker::start()
{
    thread = std::thread(&StoreWorker::run, this);
}

bool StoreWorker::stop()
{
    std::unique_lock<std::mutex> guard(mutex);
    isStopping = true;
    change.notify_all();
    return change.wait_for(guard, stopTime, [this] { return isOver; });
}

void StoreWorker::wake(bool areFoldersMeant)
{
    const std::lock_guard<std::mutex> guard(mutex);
    (areFoldersMeant ? areFoldersDue : isSpoolDue) = true;
    change.notify_all();
}

QStringList StoreWorker::takeRefused()
{
    const std::lock_guard<std::mutex> guard(mutex);
    return std::exchange(refused, {});
}

bool StoreWorker::isHopeless()
{
    const std::lock_guard<std::mutex> guard(mutex);
    return hopeless;
}

void StoreWorker::run()
{
    for (bool goesOn = true; goesOn;) {
        goesOn = tryToStore();
        std::unique_lock<std::mutex> guard(mutex);
        hopeless = !goesOn;
        change.wait_for(guard, retryTime, [this] {
            return isStopping || (!isAway && (isSpoolDue || areFoldersDue));
        });
        goesOn = goesOn && !isStopping;
    }
    database.reset();
    const std::lock_guard<std::mutex> guard(mutex);
    isOver = true;
    change.notify_all();
}

/// False if another try is of no use.
bool StoreWorker::tryToStore()
{
    try {
        storeAll();
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

void StoreWorker::storeAll()
{
    openDatabase();
    std::unique_lock<std::mutex> guard(mutex);
    const bool withSpool = std::exchange(isSpoolDue, false);
    const bool withFolders = std::exchange(areFoldersDue, false);
    guard.unlock();
    // The spool first: its logs may be nowhere else.
    if (withSpool || withFolders)
        for (const SpoolFolder& folder : SpoolFolder::below(spoolLocation))
            if (const QStringList waiting = folder.waiting();
                folder.database == request.database && !waiting.isEmpty())
                storeFiles(&folder, waiting);
    if (!withFolders)
        return;
    QStringList files;
    for (const QString& path : request.paths)
        files += logfiles::filesOf(path);
    storeFiles(nullptr, files);
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

/// folder: the spool's that the files lie in, if any.
void StoreWorker::storeFiles(const SpoolFolder* folder, const QStringList& files)
{
    logimport::Listener listener;
    listener.stored = [&](const QStringList& paths, const StoreCounts& counts) {
        noteStored(counts);
        if (folder != nullptr)
            for (const QString& path : paths)
                SpoolFolder::remove(path);
    };
    listener.refused = [&](const QString& path, const QString& reason) {
        if (folder == nullptr)
            refuse(path, reason);
        else if (!logfiles::isGone(path))
            messages::warn(folder->moveAside(path, reason));
    };
    logimport::store(*database, folder != nullptr ? folder->station : request.station, files,
                     listener);
}

/// The other thread tries it again and names it when it does not change any more.
void StoreWorker::refuse(const QString& path, const QString& reason)
{
    if (logfiles::isGone(path) && request.paths.contains(path))
        messages::warn(logimport::refusal(path, reason));
    const std::lock_guard<std::mutex> guard(mutex);
    refused << path;
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
