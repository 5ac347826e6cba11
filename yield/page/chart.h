// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/figures/report.h"
#include "yield/figures/timeline.h"

/// The charts of the page, as SVG.
namespace chart
{
/// A p-chart: the first-pass yield of each period with its control limits, the yield of all units
/// as the centre line, and the number of units as bars below. Without a period: none.
QString trend(const Timeline& timeline, const Tally& all);

/// The same for stations, with gaps between them: no line connects them.
QString stations(const QMap<QString, StationReport>& stations, const Tally& all);

/// A bar for the failures of each of the first controls, and a line for their cumulative share of
/// all failures. Without failures: none.
QString pareto(const Report& report);

/// How many units missed each band of a control; at least one did.
QString bands(const ControlFailures& control);

/// The heat map: the control surface as the station's window lays it out, each control coloured by
/// its share of failed units, and a key to the colours.
QString surface(const QVector<ControlFailures>& controls);
} // namespace chart
