// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/logs/bandmarks.h"

#include <QString>

/// One attempt at a unit: what its logs say of it. attemptrules says what that comes to.
struct Attempt {
    QString station;
    bool tests18 = false; ///< Whether that station tests component 18.
    QString serial;
    QString testedAt; ///< yyyy-MM-ddTHH:mm:ss, the station's wall clock.
    BandMarks marks;
};

/// A station that the database knows, and when it last sent a log.
struct StationNews {
    QString station;
    QString newestAt; ///< As testedAt; empty without a log, or with logs of the future only.
};
