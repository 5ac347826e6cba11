// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/intake/logimport.h"
#include "yield/intake/outbox.h"

#include <QDateTime>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QHash>

#include <chrono>
#include <memory>
#include <optional>

/// What is collected, and where it goes.
struct CollectRequest {
    QString database;
    Station station;
    QString logs;  ///< The folder that the station writes to.
    QString spool; ///< The folder of version 1.2.0's spool.
};

/// Stores the logs of an outbox and moves each to Stored after the commit. Written to be killed at
/// any moment: a log that was not moved is read again and is a duplicate then. Prints what the user
/// should know.
class Collector
{
public:
    explicit Collector(const CollectRequest& whatToCollect);

    /// Goes on until the process ends. Throws DatabaseError for a database that can never be used.
    [[noreturn]] void run();

    enum class Result {
        Done,
        ProblemsFound, ///< A log stays in the outbox, or was rejected.
        NoOutbox
    };

    /// Stores what is in the outbox now. Throws DatabaseError.
    Result pass();

private:
    /// A log that could not be read or moved.
    struct Retry {
        std::chrono::seconds pause{0};
        QDeadlineTimer next;
    };

    void makeOutbox();
    bool isScanDue();
    QStringList dueLogs();
    std::unique_ptr<Database> openDatabase();
    void importLogs(Database& database);
    void finish(const logimport::Batch& batch);
    void moveLog(const QString& path, QString rejection = {});
    void postpone(const QString& name, const QString& reason);
    void noteOutbox(const QString& problem);
    void noteUnavailable(const QString& reason);
    void noteAvailable();

    const CollectRequest request;
    const Outbox outbox;

    QDeadlineTimer makeOutboxAt{0};
    bool hadOutbox = false;
    bool isImportDue = false;             ///< Of the logs in LOGS.
    std::optional<QString> outboxProblem; ///< As printed last; empty while there is none.
    bool hasPending = true;               ///< At the last scan.
    QDateTime outboxChangedAt;
    int passesSinceChange = 0;
    QHash<QString, Retry> retries; ///< By name.
    bool hasProblem = false;       ///< In this pass.

    bool isMigrated = false;        ///< The database.
    bool isAvailable = false;       ///< The database.
    QElapsedTimer unavailableSince; ///< Since it was printed last; invalid while it is available.
};
