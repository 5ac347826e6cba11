// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "unit/componentroster.h"

#include <QDate>
#include <QMap>
#include <QString>
#include <QVector>

#include <array>

class QSqlDatabase;

/// Which units a report is about: those whose first attempt lies in the time and was made at the
/// station. All their attempts count, later ones and those at other stations too.
struct ReportRequest {
    QDate since;     ///< First day, inclusive; invalid for no bound.
    QDate until;     ///< Last day, inclusive; invalid for no bound.
    QString station; ///< Empty for all stations.
};

/// How units of one day, of one station or of the whole report fared.
struct Tally {
    int units = 0;
    int attempts = 0;
    int passedFirst = 0; ///< Units whose first attempt is complete.
    int passedLast = 0;  ///< Units whose last attempt is complete.

    Tally& operator+=(const Tally& other);
};

/// How often one control was not complete in the first attempt at a unit.
struct ControlMisses {
    int units = 0;            ///< Units whose first attempt was to test this control.
    int missed = 0;           ///< Of these, units that missed one of its bands or more.
    QVector<int> missedBands; ///< Of these, units that missed the band, by band.
};

/// What one attempt missed of one control.
struct MissedControl {
    int componentNum = 0;
    QVector<int> bands; ///< Ascending.
};

/// A unit whose last attempt is not complete.
struct OpenUnit {
    QString serial;
    int attempts = 0;
    QString lastTestedAt; ///< As in the database: yyyy-MM-ddTHH:mm:ss, local.
    QString lastStation;
    int missedControlCount = 0;
    QVector<MissedControl> missed; ///< The first of them, at most maxMissedControls.

    static constexpr int maxMissedControls = 3;
};

/// A unit that was tested more than once.
struct RepeatedUnit {
    QString serial;
    int attempts = 0;
    QString firstTestedAt;
    QString firstStation;
    bool passedFirst = false;
    QString lastTestedAt;
    QString lastStation;
    bool passedLast = false;
};

/// Stations side by side: the units first tested there.
struct StationReport {
    QString name;
    Tally tally;
    std::array<int, roster::componentCount> missed{}; ///< Units by control, as in ControlMisses.
};

struct Report {
    ReportRequest request;
    bool databaseIsEmpty = false;
    Tally total;
    QMap<QDate, Tally> days;         ///< By the day of the first attempt; days with units only.
    QVector<StationReport> stations; ///< By name; those with units only.
    std::array<ControlMisses, roster::componentCount> controls;
    QVector<OpenUnit> openUnits;         ///< Newest first, at most maxOpenUnits.
    QVector<RepeatedUnit> repeatedUnits; ///< Most attempts first, at most maxRepeatedUnits.
    int repeatedUnitCount = 0;           ///< All of them.

    /// A list that is longer than this is of no use on a page.
    static constexpr int maxOpenUnits = 5000;
    static constexpr int maxRepeatedUnits = 200;
};

/// Reads the report from the database. False, with a problem for people, if a query fails or the
/// station is not known.
bool readReport(QSqlDatabase& database, const ReportRequest& request, Report& report,
                QString& problem);
