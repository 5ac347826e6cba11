// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/intake/logimport.h"

/// Imports logs as they appear.
namespace watch
{
/// Until SIGTERM or SIGINT; gives the status for the shell, or ends the process with it where the
/// database still holds a thread. To be called before any other thread is started. spool: a folder,
/// or empty for the user's own. Throws DatabaseError for a location that can be no database's.
int run(ImportRequest request, const QString& spool);
} // namespace watch
