// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/figures/report.h"

#include <QRegularExpression>

#include <map>
#include <vector>

/// A shell-style wildcard for whole serials: * stands for any characters or none, ? for one, [abc]
/// and [a-z] for one of these, [!abc] for one other. Upper and lower case differ. Not valid if a
/// bracket is open or has a slash in it, or a range runs backwards.
QRegularExpression serialPattern(const QString& wildcard);

/// Counts attempts into a report. Holds the attempts of one unit at a time, lists that do not grow
/// with the attempts, and four bytes for each test time.
class ReportCounter
{
public:
    explicit ReportCounter(const ReportRequest& request);

    /// All attempts of a unit, one or more, in the order of attemptrules::isBefore.
    void add(const std::vector<Attempt>& unit);

    /// After the last unit, once.
    Report finish();

private:
    bool isCounted(const Attempt& first);
    void countTestTime(const Attempt& attempt);

    Report report;
    std::vector<QRegularExpression> exclude;
    std::map<QString, std::vector<int>> testTimesMs; ///< By the station of the attempt.
};
