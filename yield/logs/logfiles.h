// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "unit/outboxname.h"
#include "yield/logs/stationlog.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

/// A log, and the run that its file name gives: a name of the outbox, wherever the file lies.
struct LogFile {
    StationLog log;
    std::optional<OutboxName> name = {};
};

/// The files that logs are read from; none is ever written, moved or locked.
namespace logfiles
{
/// The files that a path stands for: the visible files of a folder, without those of folders in
/// it, or the path itself. The path itself too if there is nothing, so that its reading says so.
QStringList filesOf(const QString& path);

/// Whether a file is no longer there: a log in the making gets its own name when it is complete.
bool isGone(const QString& path);

/// What a file holds, but not much more than a log can. Nothing, and a reason for people, if it is
/// no file or cannot be read.
std::optional<QByteArray> bytesOf(const QString& path, QString& reason);

/// Reads a log. Nothing, and a reason for people, if the file cannot be read or is no log.
std::optional<LogFile> read(const QString& path, QString& reason);
} // namespace logfiles
