// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/figures/report.h"

#include <QJsonValue>
#include <QString>

/// One figure: as the page shows it, and as scripts read it.
struct Cell {
    QString text;
    QJsonValue value;
    QString classes = {}; ///< Of the style sheet.
    QString basis = {};   ///< What a percentage is of: "291 of 299".

    /// "97.3 % (291 of 299)".
    QString fullText() const { return basis.isEmpty() ? text : text + " (" + basis + ')'; }
};

namespace cells
{
/// "1,234".
QString countText(int number);

/// "1 unit", "1,234 units".
QString unitsText(int number);

/// "97.3 %". Only all of them are "100 %" and only none are "0 %"; "–" of nothing.
QString percentText(int part, int whole);

/// "Fader 3 (component 3)".
QString controlText(int componentNum);

Cell count(int number);

/// Null where nothing is to be shown.
Cell empty();

/// A percentage of a part; the value has the counts and the share from 0 to 1.
Cell share(int part, int whole);

/// A percentage alone; the value goes from 0 to 1.
Cell percent(int part, int whole);

/// The control limits of a part of all units, and where its first-pass yield lies.
Cell controlLimits(const Tally& part, const Tally& all);

/// The component's number as value.
Cell control(int componentNum);
Cell failedUnits(const ControlFailures& control);

/// "2 min 35 s"; the value has seconds.
Cell testTime(const TestTimes& times);

/// A station's name.
Cell station(const QString& name);

/// The time of a log, to the minute; the value has the whole time.
Cell time(const QString& testedAt);
} // namespace cells
