// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/figures/report.h"
#include "yield/figures/timeline.h"

class Html;

/// The pictures of the page.
namespace chart
{
/// A p-chart: the first-pass yield of each period against its limits, the yield of all units as the
/// centre, and the number of units as bars below.
void drawTimeline(Html& html, const Timeline& timeline, const Tally& all);

/// The same for one station, in one line, on an axis from axisBegin to 100 percent.
void drawStation(Html& html, const StationReport& station, const Tally& all, double axisBegin);

/// An axisBegin for all stations of the report: all yields lie on the axis.
double axisBegin(const Report& report);

/// A control and the units that missed it at the first attempt.
struct ParetoBar {
    QString name;
    int missed;
};

/// Bars in the order of the list, and a line that adds up their shares of all misses. `all` is the
/// number of all misses, those of controls without a bar included; it is the upper end of the axis.
void drawPareto(Html& html, const QVector<ParetoBar>& bars, int all);

/// How many units missed each band of a control.
void drawBands(Html& html, int componentNum, const ControlMisses& control);

/// A part of a whole (above 0) as a bar.
void drawShare(Html& html, int part, int whole);

/// The control surface as the station's window lays it out, each control coloured by how often its
/// first attempt missed a band.
void drawSurface(Html& html, const Report& report);
} // namespace chart
