// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "benchmarks/row.h"

void addBenchmarks(MainWindow& station)
{
    addMessageRows(station);
    addArmedFaderRows(station);
    addWindowRows(station);
    addLogRows(station);
    addProcessorRows();
    addProcessRows();
}
