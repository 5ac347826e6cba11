// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/intake/logimport.h"
#include "yield/intake/spool.h"

#include <QElapsedTimer>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

#include <sys/types.h>

/// Stores what waits in the spool, on a thread that may have to wait for the database.
class StoreWorker
{
public:
    /// spoolRoot: all that waits below it for this database is stored, as whatever station.
    StoreWorker(const ImportRequest& whatToStore, const QString& spoolRoot);
    ~StoreWorker();
    StoreWorker(const StoreWorker&) = delete;
    StoreWorker& operator=(const StoreWorker&) = delete;

    void start();
    /// False if the database still holds the thread after half a second: then the process has to
    /// end without it.
    bool stop();
    /// A log is in the spool, or, if the spool cannot take it, in its folder.
    void wake(bool areFoldersMeant);
    /// Files that could not be read as logs.
    QStringList takeRefused();
    /// Whether the database will never do; the reason has been written.
    bool isHopeless();

private:
    void run();
    bool tryToStore();
    void storeAll();
    void openDatabase();
    void storeFiles(const SpoolFolder* folder, const QStringList& files);
    void refuse(const QString& path, const QString& reason);
    void noteStored(const StoreCounts& counts);
    void lose(const QString& reason);

    const ImportRequest request;
    const QString spoolLocation;
    std::thread thread;

    std::mutex mutex; ///< For the next seven.
    std::condition_variable change;
    bool isSpoolDue = true;
    bool areFoldersDue = true;
    bool isStopping = false;
    bool isOver = false;
    bool hopeless = false;
    QStringList refused;

    // The thread's own.
    std::unique_ptr<Database> database;
    ino_t fileNumber = 0; ///< Of SQLite's file.
    bool wasOpen = false;
    bool isAway = false;
    QElapsedTimer sinceSaid;
};
