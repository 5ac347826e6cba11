// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <benchmark/benchmark.h>

#include <array>
#include <functional>
#include <string>

/// What one row of the table is made of.
struct Row {
    const char* name;
    double goal;      ///< Where above 0: how many times the floor's the station's figure may be.
    double limit = 0; ///< Where above 0: what the station's figure must stay under, in seconds.
};

using Measurement = std::function<void(benchmark::State&)>;

/// Registers both sides of a row as "name/station" and "name/floor", wall-clock time. What the
/// table needs to know of the row travels in the counters.
inline std::array<benchmark::internal::Benchmark*, 2>
addSides(const Row& row, const Measurement& station, const Measurement& floor)
{
    const auto add = [&row](const char* side, const Measurement& measure) {
        const auto measured = [row, measure](benchmark::State& state) {
            measure(state);
            state.counters["goal"] = row.goal;
            state.counters["limit"] = row.limit;
        };
        const auto name = std::string(row.name) + '/' + side;
        return benchmark::RegisterBenchmark(name.c_str(), measured);
    };
    return {add("station", station), add("floor", floor)};
}

/// The usual row: wall-clock time.
inline void addRow(const Row& row, const Measurement& station, const Measurement& floor)
{
    for (auto* side : addSides(row, station, floor))
        side->UseRealTime();
}

/// Says how many of the things that the row is about one iteration did.
inline void setPerIteration(benchmark::State& state, int things)
{
    state.counters["things"] = things;
}

class MainWindow;

/// What a program measures. The station is hidden and armed on its first component.
void addBenchmarks(MainWindow& station);

// One for each file of rows. The station is hidden and armed on its first component, and is left
// so.
void addMessageRows(MainWindow& station);
void addArmedFaderRows(MainWindow& station);
void addWindowRows(MainWindow& station);
void addLogRows(MainWindow& station);
void addProcessorRows();
void addProcessRows();
