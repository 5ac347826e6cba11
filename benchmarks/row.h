// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

using Measurement = std::function<void(benchmark::State&)>;

/// Registers the two sides of a row of the table; the name of each is "row/side/goal". The goal is
/// the maximum ratio of station to baseline. A measurement sets the counter "per_iteration" where
/// one iteration does the row's job more than once.
inline void addRow(const std::string& row, const char* goal, const Measurement& station,
                   const Measurement& baseline)
{
    // Older versions of the library take no std::string.
    benchmark::RegisterBenchmark((row + "/station/" + goal).c_str(), station)->UseRealTime();
    benchmark::RegisterBenchmark((row + "/baseline/" + goal).c_str(), baseline)->UseRealTime();
}

class MainWindow;

// The station is hidden and armed on its first component, and is left so.
void addWindowRows(MainWindow& station);
void addLogRows(MainWindow& station);
void addAudioRow();
