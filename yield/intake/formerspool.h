// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/store/attemptstore.h"

#include <QStringList>

/// The spool of version 1.2.0, a folder where logs waited for their database. Nothing adds to it
/// any more.
namespace formerspool
{
/// The logs that were spooled for one database and station.
struct Spool {
    Station station;
    QStringList logs;
};

/// Reads the folder that --spool named. Prints which logs it leaves out because they were spooled
/// for another database.
std::vector<Spool> read(const QString& root, const QString& database);
} // namespace formerspool
