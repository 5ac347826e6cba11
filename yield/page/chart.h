// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/figures/report.h"

/// The charts of the page, as SVG.
namespace chart
{
/// A p-chart: the first-pass yield of each period with its control limits, the yield of all units
/// as the centre line, and the number of units as bars below.
QString trend(const Report& report);

/// The same for stations, with gaps between them: no line connects them.
QString stations(const Report& report);

/// A bar for the failures of each of the first controls, and a line for their cumulative share of
/// all failures.
QString pareto(const Report& report);

/// How many units missed each band of a control; at least one did.
QString bands(const ControlFailures& control);

/// The heat map: the control surface as the station's window lays it out, each control coloured by
/// its share of failed units.
QString surface(const Report& report);
} // namespace chart
