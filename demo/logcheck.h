// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "simulator/unitfault.h"

#include <QByteArray>
#include <QString>

/// Compares the station's log with the unit that was tested.
namespace logcheck
{
/// Returns in words what in the log differs from a whole run of the unit at the station's panels,
/// or why it is no log; empty if nothing does.
QString differences(const QByteArray& log, const UnitFault& unit, bool isTarvekStation);
} // namespace logcheck
