// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/figures/report.h"
#include "yield/figures/timeline.h"

/// The pictures of the page, as SVG.
namespace chart
{
/// A p-chart: the first-pass yield of each period against its limits, the yield of all units as the
/// centre, and the number of units as bars below. Empty without a period.
QString timeline(const Timeline& timeline, const Tally& all);

/// A bar for the units that missed each of these controls, and a line that adds up their shares of
/// all misses, those of other controls included. Empty without a control.
QString pareto(const QVector<ControlMisses>& controls, int allMisses);

/// How many units missed each band of a control.
QString bands(const ControlMisses& control);

/// The control surface as the station's window lays it out, each control coloured by how often its
/// first attempt missed a band, and what the colours mean.
QString surface(const QVector<ControlMisses>& controls);
} // namespace chart
