// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/logs/attempt.h"
#include "yield/logs/bandmarks.h"

#include <QString>

#include <optional>
#include <vector>

/// What logs mean. Pure functions; the one place for these rules.
namespace attemptrules
{
/// What one log says of the unit and the station that it is about.
struct Save {
    QString testedAt; ///< yyyy-MM-ddTHH:mm:ss
    BandMarks marks;

    bool operator==(const Save& other) const
    {
        return testedAt == other.testedAt && marks == other.marks;
    }
};

/// Whether the marks have one of component 18: only a station that tests it leaves one.
bool showsComponent18(const BandMarks& marks);

/// Whether a log is the same attempt saved again: "Save Log" in mid-run, the end of the run later.
/// latest is the latest log of the attempt, later the next log of the same unit and station. It is
/// if its marks contain the attempt's, one run can lead from these to those, and it comes at most
/// 30 minutes later, at most 60 seconds once the attempt has a mark of component 43.
bool isSavedAgain(const Save& latest, const Save& later);

/// The logs of one unit at one station, grouped.
struct Attempts {
    std::vector<Save> attempts; ///< For each attempt the first log with all its marks, by time.
    std::vector<Save> others;   ///< The rest of the logs, the other saves.
};

/// Logs in any order, each once, all of them attempts. The same logs give the same result,
/// whatever their order.
Attempts grouped(std::vector<Save> saves);

/// The order of the attempts at one unit, at whatever stations: by time, then by the station's name
/// in UTF-8, then fewer marks first, then by the packed marks. Never by the order of import.
bool isBefore(const Attempt& left, const Attempt& right);

/// Whether a run works that component, 0 to 43: not 39, and 18 at a station that tests it only.
bool isTested(int componentNum, bool tests18);

/// What an attempt comes to.
struct Outcome {
    std::vector<bandmarks::Band> missed; ///< In the order of the marks, of tested controls only.
    /// The control where the run ended early: it and all tested ones after it, at least two
    /// altogether, have no mark. They were not tried, so none of their bands is missed.
    std::optional<int> endedAt;

    bool isComplete() const { return missed.empty() && !endedAt; }
};

Outcome outcomeOf(const BandMarks& marks, bool tests18);

/// Between two times of logs; the same on a computer in any time zone.
qint64 secondsBetween(const QString& earlier, const QString& later);
} // namespace attemptrules
