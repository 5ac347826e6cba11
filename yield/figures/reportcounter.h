// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/figures/report.h"
#include "yield/logs/attemptrules.h"

#include <QRegularExpression>

#include <map>
#include <optional>
#include <vector>

/// A shell-style wildcard for whole serials: * stands for any characters or none, ? for one, [abc]
/// and [a-z] for one of these, [!abc] for one other. Upper and lower case differ. Not valid if a
/// bracket is open, or a range runs backwards. Matches serials with each slash replaced by a NUL.
QRegularExpression serialPattern(const QString& wildcard);

/// Counts attempts into a report. Holds one unit at a time, lists that do not grow with the
/// attempts, and four bytes for each test time.
class ReportCounter
{
public:
    explicit ReportCounter(const ReportRequest& request);

    /// All attempts, unit by unit; those of a unit in their order: by time, station's name, fewer
    /// marks, packed marks.
    void add(const Attempt& attempt);

    /// After the last attempt, once.
    Report finish();

private:
    /// The unit whose attempts are being added.
    struct Unit : TestedUnit {
        bool isCounted = false;
        Tally tally;
        /// The last attempt that was not aborted, if it failed.
        std::optional<Attempt> failure;
    };

    bool isCounted(const Attempt& first);
    void countFirst(const attemptrules::Outcome& outcome);
    void countNumber(const attemptrules::Outcome& outcome);
    void countFailure(const attemptrules::Outcome& outcome);
    void countTestTime(const Attempt& attempt);
    void finishUnit();

    Report report;
    std::vector<QRegularExpression> exclude;
    std::map<QString, std::vector<int>> testTimesMs; ///< By the station of the attempt.
    Unit unit;
};
