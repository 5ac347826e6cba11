// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/intake/logimport.h"
#include "yield/intake/spool.h"

#include <QElapsedTimer>

#include <chrono>
#include <condition_variable>
#include <future>
#include <memory>
#include <mutex>

#include <sys/types.h>

/// Stores what waits in the spool, on a thread that may have to wait for the database.
class StoreWorker
{
public:
    /// spoolRoot: all that waits below it for this database is stored, as whatever station.
    StoreWorker(const ImportRequest& whatToStore, const QString& spoolRoot);

    void start();
    /// A log is in the spool, or, if the spool cannot take it, in its folder.
    void wake(bool areFoldersMeant = false);
    /// Files that could not be read as logs.
    QStringList takeRefused();
    void stop();
    /// Whether the thread ends within that time: when it was stopped, or when the database will
    /// never do and the reason has been written.
    bool isOver(std::chrono::milliseconds patience = {}) const;

private:
    void run();
    bool tryToStore();
    void openDatabase();
    void storeSpool(const Spool& spool);
    void storeFolders();
    void noteStored(const StoreCounts& counts);
    void lose(const QString& reason);

    const ImportRequest request;
    const QString spoolLocation;

    std::mutex mutex; ///< For the next five.
    std::condition_variable change;
    bool isDue = false;
    bool areFoldersDue = true;
    bool isStopping = false;
    QStringList refused;

    // The thread's own.
    std::unique_ptr<Database> database;
    ino_t fileNumber = 0; ///< Of SQLite's file.
    bool wasOpen = false;
    bool isAway = false;
    QElapsedTimer sinceSaid;

    std::future<void> thread; ///< The last member: its end is waited for before the others go.
};
