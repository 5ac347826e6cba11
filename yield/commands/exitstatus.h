// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

/// The exit status of zorvi_yield, as grep and diff have it.
enum class ExitStatus {
    Success = 0,
    /// A file was rejected, a log stays in the outbox, the last attempt did not pass, or status
    /// found something that needs attention; there also an unavailable database.
    ProblemsFound = 1,
    /// The command line makes no sense, the database cannot be used or output not be written.
    Error = 2
};
