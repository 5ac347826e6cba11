// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <benchmark/benchmark.h>

#include <QByteArray>

#include <functional>
#include <string>

/// What one row of the table is made of.
struct Row {
    std::string name;
    double goal;      ///< Largest ratio of station to floor; 0 for none.
    double limit = 0; ///< What the station's figure must stay under, in seconds; 0 for none.
};

using Measurement = std::function<void(benchmark::State&)>;

/// Registers a side of a row, "station" or "floor". The counters tell the table of the row.
inline benchmark::internal::Benchmark* addSide(const Row& row, const char* side,
                                               const Measurement& measure)
{
    const std::string name = row.name + '/' + side;
    const auto measured = [row, measure](benchmark::State& state) {
        measure(state);
        state.counters["goal"] = row.goal;
        state.counters["limit"] = row.limit;
    };
    const char* const text = name.data(); // older versions of the library take no std::string
    return benchmark::RegisterBenchmark(text, measured);
}

/// The usual row: wall-clock time. One without a floor has a limit instead.
inline void addRow(const Row& row, const Measurement& station, const Measurement& floor = {})
{
    addSide(row, "station", station)->UseRealTime();
    if (floor)
        addSide(row, "floor", floor)->UseRealTime();
}

/// Says how many of the things that the row is about one iteration did.
inline void setPerIteration(benchmark::State& state, double things)
{
    state.counters["things"] = things;
}

/// Resident memory of a process ("self" or its number) in bytes; 0 if there is none such.
double residentBytesOf(const QByteArray& process);

class MainWindow;

// The station is hidden and armed on its first component, and is left so.
void addMessageRows(MainWindow& station);
void addWindowRows(MainWindow& station);
void addThreadRows();
void addProcessRows();
void addGrowthRows(MainWindow& station);
// Rows of zorvi_yield; they need no station.
void addYieldRows();
