// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "unit/outboxname.h"

#include <QDateTime>
#include <QStringList>

/// The folder Logs/Outbox of a station. Where it exists, and is not a link, each log goes there
/// too, under a name that is never used again. The station does not create it. On the GUI thread.
class OutboxWriter
{
public:
    explicit OutboxWriter(const QString& logsFolder)
        : folder(logsFolder + "/Outbox")
    {
    }

    /// The next log is the first one of another run.
    void startRun();

    /// Writes a log, its elements as testlog::lines gives them, whole or not at all. firstBandAt:
    /// the time of the run's first band; null: no band, so no log. A failure is printed on stderr.
    void add(const QStringList& lines, const QDateTime& firstBandAt, bool isTarvekStation);

private:
    const QString folder;
    OutboxName name; ///< Of the last log. Its run is empty until the run's first log.
    bool wasFound = false;
};
