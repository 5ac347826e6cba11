// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/intake/outbox.h"

#include <QDateTime>

/// What an operator of the collector should know of an outbox.
struct OutboxStatus {
    int pending = 0;
    QDateTime oldest; ///< When the oldest pending log was written.
    std::vector<RejectedLog> rejected;
    /// A log with a mark in LOGS that was written a minute or more after every file of the outbox
    /// and of Stored: its station does not know the outbox yet. Empty if there is none.
    QString newerLog;

    /// Also if a log has been pending for an hour.
    bool needsAttention(const QDateTime& now) const;
};

namespace outboxstatus
{
/// Changes nothing. Throws std::runtime_error, also without an outbox.
OutboxStatus read(const QString& logs);
} // namespace outboxstatus
