// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/page/cells.h"

#include <QVector>

struct Column {
    QString heading;
    QString key; ///< In the JSON object of a row.
};
using Row = QVector<Cell>;

struct Table {
    QString label; ///< For screen readers.
    QVector<Column> columns;
    QVector<Row> rows = {};
};

/// The figures of a report: the page shows them as tables and tiles, the JSON has them by their
/// keys, so that both always agree.
namespace tables
{
Table lastLogs(const Report& report);
Table recentDays(const Report& report);
Table totals(const Report& report); ///< One row.
Table trend(const Report& report);
Table stations(const Report& report);

Table controls(const Report& report);
Table pareto(const Report& report);
/// Of the controls of the charts of missed bands.
Table bands(const Report& report);
Table aborted(const Report& report);

Table attemptsByNumber(const Report& report);
Table notPassed(const Report& report);
Table retested(const Report& report);
} // namespace tables
