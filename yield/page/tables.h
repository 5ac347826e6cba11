// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/figures/report.h"

#include <QJsonValue>
#include <QMap>
#include <QPair>
#include <QString>
#include <QVector>

/// One figure: as the page shows it, and as scripts read it.
struct Cell {
    QString text;
    QJsonValue value;     ///< Null of nothing.
    QString classes = {}; ///< Of the style sheet.
    QString basis = {};   ///< What a percentage is of: "291 of 299".

    /// "97.3 % (291 of 299)".
    QString fullText() const { return basis.isEmpty() ? text : text + " (" + basis + ')'; }
};

/// The figures of a row by their keys in the JSON, in the order of the page's columns.
using Row = QVector<QPair<QString, Cell>>;
using Rows = QVector<Row>;
/// By their names in the JSON; "totals" has one row.
using Tables = QMap<QString, Rows>;

namespace cells
{
QString countText(int number); ///< "1,234".
QString unitsText(int number); ///< "1 unit", "1,234 units".

/// A percentage and its basis; the value has the counts and the share. Only all are "100 %" and
/// only none are "0 %"; "–" of nothing.
Cell share(int part, int whole);

/// "Fader 3 (component 3)"; the value is the component's number.
Cell control(int componentNum);
} // namespace cells

/// The figures of a report: the page shows them in its tables and tiles, the JSON has them by their
/// keys, so that both always agree.
namespace tables
{
Tables all(const Report& report);
} // namespace tables
