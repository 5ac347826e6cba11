// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/intake/logimport.h"
#include "yield/intake/spool.h"

#include <QElapsedTimer>
#include <QSemaphore>

#include <atomic>
#include <future>
#include <memory>
#include <mutex>

#include <sys/types.h>

/// Stores what waits in the spool, on a thread that may have to wait for the database.
class StoreWorker
{
public:
    /// Begins at once. storedSpools: what waits in them is stored, as whatever station.
    StoreWorker(const ImportRequest& whatToStore, const std::vector<Spool>& storedSpools);

    /// A log is in the spool, or, if the spool cannot take it, in its folder.
    void wake(bool areFoldersMeant = false);
    /// Files that could not be read as logs.
    QStringList takeRefused();
    /// Whether the thread has ended, because the database will never do; it has said why.
    bool isOver() const;
    /// False if the database still holds the thread.
    bool stop();

private:
    void run();
    bool tryToStore();
    void openDatabase();
    void storeSpool(const Spool& spool);
    void storeFolders();
    void noteStored(const StoreCounts& counts);
    void noteAway(const QString& reason);

    const ImportRequest request;
    const std::vector<Spool> spools;

    QSemaphore news; ///< Something is to be stored, or the end.
    std::atomic<bool> areFoldersDue{true};
    std::atomic<bool> isStopping{false};
    std::mutex mutex; ///< For the next one.
    QStringList refused;

    // The thread's own.
    std::unique_ptr<Database> database;
    ino_t fileNumber = 0; ///< Of SQLite's file; 0 for a server, and before it was open.
    bool wasOpen = false;
    QElapsedTimer sinceAway; ///< Since it was said last; invalid while the database is there.

    std::future<void> thread; ///< The last member: its end is waited for before the others go.
};
