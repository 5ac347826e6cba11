// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/logs/bandmarks.h"

#include <QString>

#include <optional>
#include <vector>

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

/// The meaning of a log. Pure functions; the one place for these rules.
namespace attemptrules
{
/// The marks of component 18: only a station that tests it leaves one.
BandMarks channelButtonMarks();

/// The order of the attempts of a unit: by time, the station's name in UTF-8, fewer marks first,
/// the packed marks. Never by the order of import.
bool isBefore(const Attempt& left, const Attempt& right);

/// Whether a run tests that component, 0 to 43: not 39, and 18 at a station that tests it only.
constexpr bool isTested(int componentNum, bool tests18)
{
    return componentNum != roster::powerButton &&
           (tests18 || componentNum != roster::channelButton);
}

/// The result of an attempt: passed, aborted, or else failed.
struct Outcome {
    std::vector<bandmarks::Band> missed; ///< In the order of the marks, of tested controls only.
    /// Where the run was aborted: this control and all tested ones after it, at least two
    /// altogether, have no mark. None of their bands is missed.
    std::optional<int> abortedAt;

    bool hasPassed() const { return missed.empty() && !abortedAt; }
};

Outcome outcomeOf(const BandMarks& marks, bool tests18);
} // namespace attemptrules
