// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/figures/report.h"
#include "yield/figures/timeline.h"

class Html;

/// The charts of the page.
namespace chart
{
/// First-pass yield as a line of dots, the number of units as bars below it.
void drawTimeline(Html& html, const Timeline& timeline);

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

/// The range that holds the true yield with a confidence of 95 %, as fractions, if `passed` of
/// `units` (above 0) passed: the score interval by Wilson.
struct Interval {
    double low;
    double high;
};
Interval yieldInterval(int passed, int units);

/// A yield as a dot and its interval as a line, on an axis from `axisBegin` to 1, both fractions.
void drawInterval(Html& html, int passed, int units, double axisBegin);
} // namespace chart
