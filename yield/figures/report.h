// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "unit/componentroster.h"
#include "yield/figures/limits.h"
#include "yield/logs/attempt.h"

#include <QDateTime>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVector>

#include <vector>

/// Which units a report is about: those whose first attempt lies in the time and was made at the
/// station, and whose serial no pattern matches. All their attempts count, later ones and those at
/// other stations too.
struct ReportRequest {
    QDate since;                     ///< First day, inclusive; invalid for no bound.
    QDate until;                     ///< Last day, inclusive; invalid for no bound.
    QString station;                 ///< Empty for all stations.
    QStringList without;             ///< Shell-style wildcards for whole serials, valid ones.
    QDateTime now;                   ///< When the report is made, local.
    std::vector<LastLog> lastLogs{}; ///< Of every station that the database knows, by name.

    bool includes(const QDate& day) const
    {
        // An invalid date lies before every other.
        return day >= since && (!until.isValid() || day <= until);
    }
    bool includes(const QString& name) const { return station.isEmpty() || name == station; }
};

/// How often one control was not complete in the first attempt at a unit.
struct ControlMisses {
    int componentNum = 0;
    int units = 0;            ///< Units whose first attempt tried this control.
    int missed = 0;           ///< Of these, units that missed one of its bands or more.
    QVector<int> missedBands; ///< Of these, units that missed the band, by band.
    int endedHere = 0;        ///< Units whose first attempt ended early at this control.
};

/// The first, second, third … attempts at units.
struct AttemptsByNumber {
    int attempts = 0;
    int passed = 0;
    int endedEarly = 0; ///< Neither passed nor failed.
};

/// Failed attempts, and those of them whose unit passed when it was next tested, at the same
/// station and at most an hour later: most likely failures of the test, not of the unit. Attempts
/// that ended early are left out, as if they had not been.
struct FalseFailures {
    int failed = 0;
    int passedNext = 0;
};

/// A unit, the ends of its attempts and their number.
struct TestedUnit {
    Attempt first;
    Attempt last;
    int attempts = 0;
};

/// The units first tested at one station.
struct StationReport {
    QString name;
    Tally tally;
    QVector<int> missed = QVector<int>(roster::componentCount); ///< As in ControlMisses.
};

struct Report {
    ReportRequest request; ///< With the news of the stations asked for only.
    Tally total;
    int leftOut = 0; ///< Units that only --without keeps from the report.

    /// By the day of the first attempt; days with units only, and none off the axis.
    QMap<QDate, Tally> days;
    /// Units first tested before 2000 or more than a day after the report: a wrong clock. They
    /// count in the total and everywhere else.
    Tally offAxis;

    /// First attempts first; the last of maxNumbers counts all later ones too.
    QVector<AttemptsByNumber> attemptsByNumber;
    FalseFailures falseFailures;
    QMap<QString, StationReport> stations; ///< By name; those with units only.
    QVector<ControlMisses> controls;       ///< Of the components 0 to 43.
    /// Those whose last attempt is not complete, newest first, at most maxOpenUnits.
    QVector<TestedUnit> openUnits;
    /// Those with several attempts, most attempts first, at most maxRepeatedUnits.
    QVector<TestedUnit> repeatedUnits;
    int repeatedUnitCount = 0; ///< All of them.

    static constexpr int maxNumbers = 10;
    /// A list that is longer than this is of no use on a page.
    static constexpr int maxOpenUnits = 5000;
    static constexpr int maxRepeatedUnits = 200;
};
