// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/logs/bandmarks.h"

#include <QString>

/// One attempt of a unit, as its log has it; attemptrules derives the result.
struct Attempt {
    QString station;
    bool tests18 = false; ///< Whether component 18 was tested.
    QString serial;
    QString testedAt; ///< yyyy-MM-ddTHH:mm:ss, the station's wall clock.
    BandMarks marks;
    QString startedAt = {}; ///< yyyy-MM-ddTHH:mm:ss.zzz; empty for an imported log.
};

/// A station that the database knows, and the time of its last log.
struct LastLog {
    QString station;
    QString testedAt; ///< Empty without a log, or with logs of the future only.
};
