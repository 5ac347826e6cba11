// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/intake/logimport.h"
#include "yield/logs/logfiles.h"

#include <QFileSystemWatcher>
#include <QHash>
#include <QObject>
#include <QTimer>

#include <memory>
#include <vector>

class Database;

/// Imports logs as they appear, until the program ends. While the database is away, logs are read
/// and kept in memory, because the next test of a unit overwrites them.
class LogWatch : public QObject
{
    Q_OBJECT

public:
    LogWatch(const ImportRequest& what, QTextStream& outStream, QTextStream& errorStream);
    ~LogWatch() override;

    /// The first look; needs the event loop from then on.
    void start();

Q_SIGNALS:
    /// The database will never do; the reason has been written.
    void signal_Hopeless();

private Q_SLOTS:
    void slot_Look();
    void slot_ReadOn();
    void slot_Retry();

private:
    void watchFolders();
    void readFile(const QString& path);
    void store();
    bool openDatabase();
    void lose(const QString& reason);

    const ImportRequest request;
    QTextStream& out;
    QTextStream& errors;
    QFileSystemWatcher watcher;
    QTimer lookSoon;  ///< After a change; what comes meanwhile is one look.
    QTimer lookLater; ///< For what the watcher misses, as on a network share.
    QTimer retry;     ///< While the database is away.
    QStringList toRead;
    QHash<QString, logfiles::Stamp> seenLogs;   ///< Logs as they were when read.
    QHash<QString, logfiles::Stamp> seenOthers; ///< Files that were refused.
    std::vector<StationLog> toStore;
    std::unique_ptr<Database> database;
    bool wasOpen = false;
    bool isAway = false;
};
