// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/figures/report.h"
#include "yield/figures/serialpattern.h"
#include "yield/logs/attempt.h"
#include "yield/logs/attemptrules.h"

#include <QMap>
#include <QString>

#include <vector>

/// Counts attempts into a report. Holds one unit at a time and lists that do not grow with the
/// attempts.
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
    /// Days as yyyy-MM-dd, both included; empty for no bound.
    struct Days {
        QString first;
        QString last;

        bool hold(const QString& day) const;
    };

    /// The unit whose attempts are being added.
    struct Unit {
        RepeatedUnit ends; ///< Its first attempt and the last one so far.
        bool isCounted = false;
        attemptrules::Outcome last; ///< Of the last attempt so far.
        QString failedAt;           ///< When the last attempt failed that did not end early, or
                                    ///< nothing if it passed.
        QString failedAtStation;
    };

    void beginUnit(const Attempt& first);
    void countControls(const Attempt& first);
    void countNumber(Result result);
    void countFailure(const Attempt& attempt, Result result);
    void finishUnit();
    void addRecentDays();
    void addAges();
    ControlMisses& controlOf(int componentNum);

    Report report;
    Days asked;
    Days axis;
    std::vector<SerialPattern> without;
    QMap<QString, Tally> days; ///< By the first day, as yyyy-MM-dd.
    QMap<QString, StationReport> stations;
    Unit unit;
};
