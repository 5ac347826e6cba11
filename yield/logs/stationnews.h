// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

/// A station that the database knows, and when it last sent a log.
struct StationNews {
    QString station;
    QString
        newestAt; ///< yyyy-MM-ddTHH:mm:ss; empty if there is no log, or only logs of the future.
};
