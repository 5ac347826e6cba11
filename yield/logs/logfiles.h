// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "unit/outboxname.h"
#include "yield/logs/stationlog.h"

#include <QStringList>

/// A log, and its name in the outbox, if it has such a name, wherever the file lies.
struct LogFile {
    StationLog log;
    std::optional<OutboxName> name = {};
    QString path = {};
};

/// The files that logs are read from; none is ever written, moved or locked.
namespace logfiles
{
/// The visible files of a folder, without those of its folders, sorted; or the path itself: also of
/// a folder that cannot be read, so that reading it gives the reason.
QStringList filesOf(const QString& path);

/// Whether a file is gone: a log that is being written gets its own name at the end.
bool isGone(const QString& path);

/// Reads a log. Throws NotALog, or std::runtime_error with a reason for what cannot be read.
LogFile read(const QString& path);
} // namespace logfiles
