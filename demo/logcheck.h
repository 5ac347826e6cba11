// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "simulator/unitfault.h"

#include <QByteArray>
#include <QString>

/// Compares the station's log with the unit that was tested.
namespace logcheck
{
/// What in the log differs from a whole run of the unit, in words, or why it is no log; empty if
/// nothing does. Tested bands must be covered but for those that the unit's fault leaves uncovered;
/// the channel button's must not be, unless the station tests it; the power button has none.
QString differences(const QByteArray& log, const UnitFault& unit, bool channelButtonTested);
} // namespace logcheck
