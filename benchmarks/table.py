#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
"""Puts the JSON of the benchmark runs into one file and prints its rows as a table.

Usage: table.py MERGED FILE...

A figure is the smallest of its repetitions: whatever else the machine did meanwhile only ever adds
to it, and the repetitions of all rows were taken in random order, so both sides of a row had the
same chances. The last column tells how far the repetitions lay apart, station / floor: the median
over the smallest. How a cost grows ("growth, THINGS/HOW MANY") has a separate table.
"""

import json
import statistics
import sys

SECONDS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}


def merged(files):
    """The first file with the benchmarks of all, in the order of their registration."""
    contents = []
    for name in files:
        with open(name, encoding="utf-8") as file:
            contents.append(json.load(file))
    first = contents[0]
    first["benchmarks"] = [
        run
        for content in contents
        for run in sorted(content["benchmarks"], key=lambda run: run["family_index"])
    ]
    return first


def figures(benchmarks):
    """{(name, side or how many): [(seconds, counters), ...]}"""
    found = {}
    for run in benchmarks:
        if run["run_type"] != "iteration" or run.get("error_occurred"):
            continue
        time = "cpu_time" if "/process_time" in run["name"] else "real_time"
        seconds = run[time] * SECONDS[run["time_unit"]] / run.get("things", 1)
        found.setdefault(tuple(run["name"].split("/")[:2]), []).append((seconds, run))
    return found


def least(runs):
    return min(runs, key=lambda pair: pair[0])


def text(seconds):
    for unit, factor in (("s", 1), ("ms", 1e-3), ("µs", 1e-6)):
        if seconds >= factor:
            return f"{seconds / factor:.3g} {unit}"
    return f"{seconds / 1e-9:.3g} ns"


def ratio(value, lowest):
    """As text; an empty window idles without any."""
    return f"{value / lowest:.2f}" if lowest > 0 else "-"


def spread(runs):
    seconds = [value for value, _ in runs]
    return ratio(statistics.median(seconds), min(seconds)) if seconds else "-"


def memory(run):
    return f"{run['resident'] / 2**20:.1f} MiB" if "resident" in run else ""


def row(name, found):
    """Of a benchmark with a station's side, and a floor's if it has one."""
    stations, floors = found[name, "station"], found.get((name, "floor"), [])
    station, run = least(stations)
    floor, bare = least(floors) if floors else (0, {})
    goals, met = [], True
    if run["goal"] > 0:
        goals.append(f"{run['goal']:g}")
        met = station <= run["goal"] * floor
    if run["limit"] > 0:
        goals.append(f"under {text(run['limit'])}")
        met = met and station < run["limit"]
    resident = " / ".join(filter(None, (memory(run), memory(bare))))
    return (name, text(station), text(floor) if floors else "-", ratio(station, floor),
            ", ".join(goals), "yes" if met else "no", f"{spread(stations)} / {spread(floors)}",
            resident)


def show(table):
    widths = [max(len(line[column]) for line in table) for column in range(len(table[0]))]
    table.insert(1, tuple("-" * width for width in widths))
    for line in table:
        print("| " + " | ".join(cell.ljust(width) for cell, width in zip(line, widths)) + " |")


def main(output, files):
    content = merged(files)
    with open(output, "w", encoding="utf-8") as file:
        json.dump(content, file, indent=1)
    found = figures(content["benchmarks"])
    rows = [row(name, found) for name, side in found if side == "station"]
    growth = [(name.removeprefix("growth, "), many, text(least(found[name, many])[0]),
               memory(found[name, many][-1][1]))
              for name, many in found if name.startswith("growth, ")]
    if rows:
        show([("", "station", "floor", "ratio", "goal", "met", "median / least", "memory"), *rows])
    if growth:
        show([("", "how many", "each", "memory"), *growth])


main(sys.argv[1], sys.argv[2:])
