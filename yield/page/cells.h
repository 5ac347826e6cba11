// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/figures/report.h"

#include <QJsonValue>
#include <QString>

/// One figure: as the page shows it, and as scripts read it.
struct Cell {
    QString text;
    QJsonValue value;     ///< Null of nothing.
    QString classes = {}; ///< Of the style sheet.
    QString basis = {};   ///< What a percentage is of: "291 of 299".

    /// "97.3 % (291 of 299)".
    QString fullText() const { return basis.isEmpty() ? text : text + " (" + basis + ')'; }
};

namespace cells
{
QString countText(int number); ///< "1,234".
QString unitsText(int number); ///< "1 unit", "1,234 units".

/// "97.3 %". Only all of them are "100 %" and only none are "0 %"; "–" of nothing.
QString percentText(int part, int whole);
QString durationText(qint64 seconds); ///< "2 min 35 s", "1 h 0 min 12 s".

inline Cell none()
{
    return {"–", {}};
}
Cell count(int number);
Cell station(const QString& name);

/// A percentage; the value is the share from 0 to 1.
Cell percent(int part, int whole);

/// A percentage and its basis; the value has the counts and the share.
Cell share(int part, int whole);

/// The control limits for the units of a part of the page, and where its yield lies.
Cell limits(const Tally& part, const Tally& all);
Cell testTime(const TestTimes& times);

/// "Fader 3 (component 3)"; the value is the component's number.
Cell control(int componentNum);
} // namespace cells
