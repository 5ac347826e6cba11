// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "simulator/unitfault.h"

#include <QDate>
#include <QString>
#include <QVector>

/// Two weeks of a line with three stations, simulated: the stations' own panels judge many
/// simulated units, some of them with faults, the stations' own code writes log and outbox, and
/// zorvi_yield collects them and makes the report. Each station also tests a known-good unit every
/// morning.
namespace linesimulation
{
/// A fault and the share of units that come to a station with it, 0 to 1.
struct FaultRate {
    UnitFault unit;
    double rate;
};

/// A station of the line; the shares are of its good units, 0 to 1.
struct LineStation {
    QString name;
    bool isTarvekStation;
    QVector<FaultRate> faults;
    double aborted;       ///< First run aborted, at abortedAt.
    double falseFailures; ///< Failed first, passed a few minutes later.
};

inline constexpr int abortedAt = 21;

/// Matches the serials of the known-good units.
inline constexpr const char* knownGood = "KG-*";

/// The stations and what goes wrong at each.
QVector<LineStation> stations();

/// How many of so many units are first tested at a station, counted from 0.
int unitsAt(int station, int units);

/// Makes in an existing folder yield.html, the report of the next morning without the known-good
/// units, and, in place of an earlier one, the folder simulated-line: what the line leaves by the
/// end of its last day, attempts.sqlite and a folder with Logs/ for each station. Most units with a
/// fault are repaired within days and tested again. The same number of units and the same day give
/// the same attempts. Needs a QApplication, and English names of days and months (LC_ALL=C.UTF-8).
/// Throws std::runtime_error if something cannot be written.
void run(const QString& folder, int units, const QDate& lastDay);
} // namespace linesimulation
