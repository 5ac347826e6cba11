// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "simulator/unitfault.h"

#include <QDate>
#include <QString>
#include <QVector>

/// Two weeks of a line with three stations: the logs of many simulated units, some of them with
/// faults, imported as they come, and the page about them. Each station also tests a known-good
/// unit every morning.
namespace fortnight
{
/// A fault and the share of units that come to a station with it, 0 to 1.
struct FaultRate {
    UnitFault unit;
    double rate;
};

struct LineStation {
    QString name;
    bool tests18;
    QVector<FaultRate> faults;
    double brokenOff; ///< The share of good units whose first run is broken off, at brokenOffAt.
    double
        falseFailures; ///< The share of good units that fail first, and pass a few minutes later.
};

inline constexpr int brokenOffAt = 21;

/// Matches the serials of the known-good units.
inline constexpr const char* knownGood = "KG-*";

/// The stations and what goes wrong at each.
QVector<LineStation> line();

/// How many of so many units are first tested at a station, counted from 0.
int unitsAt(int station, int units);

/// How many of the units at a station a rate stands for.
int unitsWith(double rate, int unitsAtStation);

/// Makes in an existing folder yield.html, the page of the next morning without the known-good
/// units, and, in place of an earlier one, the folder fortnight: what the line leaves by the end of
/// its last day, attempts.sqlite and a folder with Logs/ for each station. Most units with a fault
/// are repaired within days and tested again. The same number of units and the same day give the
/// same logs. Needs a QApplication, and English names of days and months (LC_ALL=C.UTF-8). False,
/// with a problem for people, if something cannot be written.
bool make(const QString& folder, int units, const QDate& lastDay, QString& problem);
} // namespace fortnight
