// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "unit/componentroster.h"
#include "yield/figures/limits.h"
#include "yield/logs/attemptrules.h"

#include <QDateTime>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <map>
#include <utility>
#include <vector>

/// Which units a report is about: those first tested in the time and at the station, and whose
/// serial no pattern matches. All their attempts count, later ones and those at other stations too.
struct ReportRequest {
    QDate since;                     ///< First day, inclusive; invalid for no bound.
    QDate until;                     ///< Last day, inclusive; invalid for no bound.
    QString station;                 ///< Empty for all stations.
    QStringList exclude;             ///< Shell-style wildcards for whole serials, valid ones.
    QDateTime now;                   ///< When the report is made, local.
    std::vector<LastLog> lastLogs{}; ///< Of every station in the database, by name.

    bool includes(const QDate& day) const
    {
        // An invalid date lies before every other.
        return day >= since && (!until.isValid() || day <= until);
    }
    bool includes(const QString& name) const { return station.isEmpty() || name == station; }
};

/// How often one control failed in the first attempts.
struct ControlFailures {
    int componentNum = 0;
    int units = 0;            ///< Units whose first attempt reached this control.
    int failed = 0;           ///< Of these, units that missed one of its bands or more.
    QVector<int> missedBands; ///< Of these, units that missed the band, by band.
    int aborted = 0;          ///< Units whose first attempt was aborted at this control.
};

/// The first, second, third … attempts of units.
struct AttemptsByNumber {
    int attempts = 0;
    int passed = 0;
    int aborted = 0; ///< Neither passed nor failed.
};

/// The time from the start of an attempt to its last log.
struct TestTimes {
    int attempts = 0;         ///< Passed ones with a start and a plausible time.
    double medianSeconds = 0; ///< 0 without such an attempt.
};

/// A unit, its first and its last attempt and the number of all.
struct TestedUnit {
    Attempt first;
    Attempt last;
    int attempts = 0;
};

/// The units first tested at one station.
struct StationReport {
    Tally tally;
    TestTimes testTimes; ///< Of the attempts made at this station.
    QVector<int> failed = QVector<int>(roster::componentCount); ///< As in ControlFailures.
};

struct Report {
    ReportRequest request;
    Tally total;
    int excluded = 0; ///< Units that only a pattern keeps from the report.

    /// By the day of the first attempt; days with units and plausible dates only.
    QMap<QDate, Tally> days;
    /// Units first tested before 2000 or more than a day after the report: a wrong clock. They
    /// count in the total and everywhere else.
    int implausibleDates = 0;

    /// First attempts first; the last of maxNumbers counts all later ones too.
    QVector<AttemptsByNumber> attemptsByNumber;
    int failedAttempts = 0;
    /// Failed attempts whose unit passed when it was next tested, at the same station and at most
    /// an hour later: most likely failures of the test, not of the unit. Aborted attempts are
    /// ignored.
    int falseFailures = 0;
    TestTimes testTimes;
    QMap<QString, StationReport> stations; ///< By name; those with units only.
    QVector<ControlFailures> controls;     ///< Of the components 0 to 43.
    /// Those whose last attempt did not pass, at most maxNotPassedUnits, by its time. Equal ones
    /// are in the order of the serials.
    std::multimap<QString, TestedUnit, std::greater<>> notPassedUnits;
    /// Those with several attempts, at most maxRetestedUnits, by number of attempts and the time of
    /// the last one.
    std::multimap<std::pair<int, QString>, TestedUnit, std::greater<>> retestedUnits;
    int retestedUnitCount = 0; ///< All of them.

    static constexpr int maxNumbers = 10;
    /// A list that is longer than this is of no use on a page.
    static constexpr int maxNotPassedUnits = 5000;
    static constexpr int maxRetestedUnits = 200;

    QVector<ControlFailures> failedControls; ///< Those with failures, most failures first.
    int failureCount = 0;                    ///< All failures of these together.
    QVector<ControlFailures> topControls() const { return failedControls.mid(0, 3); }
};
