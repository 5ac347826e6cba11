// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "simulator/unitfault.h"

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QVector>

/// Reads the station's log back, as the programs that archive it do.
namespace logcheck
{
/// What the log says of each component: the numbers behind its "Range" lines, in their order. A
/// component without such lines has an empty list.
QHash<int, QVector<int>> readCoverage(const QByteArray& log);

/// What in the log differs from a whole run of the unit, in words; empty if nothing does. Tested
/// bands must be covered but for those that the unit's fault leaves uncovered; the channel button's
/// must not be, unless the station tests it; the power button has none.
QString differences(const QByteArray& log, const UnitFault& unit, bool channelButtonTested);
} // namespace logcheck
