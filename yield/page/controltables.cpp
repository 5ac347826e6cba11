// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/controlnames.h"
#include "yield/page/tables.h"

Table tables::controls(const Report& report)
{
    Table table{"Failures on the control surface",
                {{"Control", "component"}, {"Failed units", "failed_units"}}};
    for (const ControlFailures& control : report.controls)
        table.rows.append({cells::control(control.componentNum), cells::failedUnits(control)});
    return table;
}

Table tables::pareto(const Report& report)
{
    Table table{"Failures by control",
                {{"Control", "component"},
                 {"Failed units", "failed_units"},
                 {"Share", "share"},
                 {"Cumulative", "cumulative"}}};
    const int all = failureCount(report.controls);
    int sum = 0;
    for (const ControlFailures& control : report.failedControls()) {
        sum += control.failed;
        table.rows.append({cells::control(control.componentNum), cells::failedUnits(control),
                           cells::percent(control.failed, all), cells::percent(sum, all)});
    }
    return table;
}

Table tables::bands(const Report& report)
{
    Table table{"Missed bands",
                {{"Control", "component"}, {"Band", "band"}, {"Failed units", "failed_units"}}};
    for (const ControlFailures& control : report.topControls())
        for (int band = 0; band < control.missedBands.size(); ++band)
            table.rows.append({cells::control(control.componentNum),
                               {controlnames::band(control.componentNum, band), band},
                               cells::count(control.missedBands.at(band))});
    return table;
}

Table tables::aborted(const Report& report)
{
    Table table{"Aborted first attempts",
                {{"Aborted at", "component"}, {"First attempts", "first_attempts"}}};
    for (const ControlFailures& control : report.controls)
        if (control.aborted > 0)
            table.rows.append({cells::control(control.componentNum),
                               cells::share(control.aborted, report.total.abortedFirst)});
    return table;
}
