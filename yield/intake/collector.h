// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/intake/logimport.h"
#include "yield/intake/outbox.h"

#include <QDateTime>
#include <QDeadlineTimer>
#include <QSet>

#include <chrono>
#include <optional>

struct CollectRequest {
    QString database;
    Station station;
    QString logs;  ///< The folder that the station writes to.
    QString spool; ///< The folder of version 1.2.0's spool.
};

/// Stores the logs of an outbox and moves each to Stored after the commit. May be killed at any
/// moment: a log that was not moved is read again and is a duplicate then.
class Collector
{
public:
    explicit Collector(const CollectRequest& whatToCollect);

    /// Goes on until the process ends. Throws DatabaseError for a database that can never be used.
    [[noreturn]] void run();

    /// Stores what is in the outbox now. Returns false if a log stays there or was rejected. Throws
    /// DatabaseError, or std::runtime_error if the outbox cannot be made or read.
    bool pass();

private:
    void makeOutbox();
    QStringList dueLogs();
    void prepare(Database& database);
    void importSpool(Database& database, const QString& folder);
    void importEarlierLogs(Database& database, const Station& station, const QStringList& files);
    void finish(const logimport::Result& result);
    void moveLog(const QString& log, QString rejection);
    void postpone(const QString& log, const QString& reason);

    const CollectRequest request;
    const Outbox outbox;
    QDeadlineTimer makeOutboxAt{0};
    bool hasProblem = false; ///< In this pass.

    QDateTime emptySince; ///< The outbox's last change, if it had no log then.
    int skippedScans = 0;
    QSet<QString> postponed; ///< Logs that could not be read or moved.
    std::chrono::seconds retryPause{0};
    QDeadlineTimer retryAt{0};

    bool isMigrated = false;                   ///< The database.
    std::optional<QDeadlineTimer> nextWarning; ///< While the database is unavailable.
};
