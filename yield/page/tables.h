// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/page/cells.h"

#include <QPair>
#include <QVector>

/// The figures of a row by their keys in the JSON, in the order of the page's columns.
using Row = QVector<QPair<QString, Cell>>;
using Rows = QVector<Row>;

/// The figures of a report: the page shows them in its tables and tiles, the JSON has them by their
/// keys, so that both always agree.
namespace tables
{
Rows lastLogs(const Report& report);
Rows recentDays(const Report& report);
Row totals(const Report& report);
Rows trend(const Report& report);
Rows stations(const Report& report);

Rows controls(const Report& report);
Rows pareto(const Report& report);
/// Of the controls of the charts of missed bands.
Rows bands(const Report& report);
Rows aborted(const Report& report);

Rows attemptsByNumber(const Report& report);
Rows notPassed(const Report& report);
Rows retested(const Report& report);
} // namespace tables
