// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

class Database;

/// The spool of version 1.2.0, a folder where logs waited for their database. Nothing adds to it
/// any more; what was pending there is stored once.
namespace formerspool
{
/// Stores the logs below the folder that --spool named, as the stations that they were spooled for,
/// and moves each to a folder "stored" beside it. Logs that were spooled for another database than
/// location stay. Prints what the user should know. Returns false if a log was not stored. Throws
/// DatabaseError.
bool store(Database& database, const QString& location, const QString& root);
} // namespace formerspool
