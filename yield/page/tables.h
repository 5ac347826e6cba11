// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/page/cells.h"

#include <QMap>
#include <QPair>
#include <QVector>

/// The figures of a row by their keys in the JSON, in the order of the page's columns.
using Row = QVector<QPair<QString, Cell>>;
using Rows = QVector<Row>;
/// By their names in the JSON; "totals" has one row.
using Tables = QMap<QString, Rows>;

/// The figures of a report: the page shows them in its tables and tiles, the JSON has them by their
/// keys, so that both always agree.
namespace tables
{
Tables all(const Report& report);
} // namespace tables
