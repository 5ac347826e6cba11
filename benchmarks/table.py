#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
"""Puts the JSON of the benchmark programs into one file and prints its rows as one table.

Usage: table.py MERGED FILE...

A figure is the smallest of its repetitions: whatever else the machine did meanwhile only ever adds
to it, and the repetitions of all rows were taken in random order, so both sides of a row had the
same chances. The last column tells how far the repetitions lay apart, station / floor: the median
over the smallest.
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
    """{row: {side: [(value, counters), ...]}}"""
    rows = {}
    for run in benchmarks:
        if run["run_type"] != "iteration" or "goal" not in run:
            continue
        row, side = run["name"].split("/")[:2]
        seconds = run["real_time"] * SECONDS[run["time_unit"]] / run.get("things", 1)
        value = run.get("bytes", seconds)
        rows.setdefault(row, {}).setdefault(side, []).append((value, run))
    return rows


def text(value, run):
    if "bytes" in run:
        return f"{value / 2**20:.1f} MiB"
    for unit, factor in (("s", 1), ("ms", 1e-3), ("µs", 1e-6)):
        if value >= factor:
            return f"{value / factor:.3g} {unit}"
    return f"{value / 1e-9:.3g} ns"


def ratio(value, least):
    """As text; an empty window idles without any."""
    return f"{value / least:.2f}" if least > 0 else "-"


def spread(runs):
    values = [value for value, _ in runs]
    return ratio(statistics.median(values), min(values))


def main(output, files):
    content = merged(files)
    with open(output, "w", encoding="utf-8") as file:
        json.dump(content, file, indent=1)
    table = [("", "station", "floor", "ratio", "goal", "met", "median / least")]
    for row, sides in figures(content["benchmarks"]).items():
        station, run = min(sides["station"], key=lambda pair: pair[0])
        floor, _ = min(sides["floor"], key=lambda pair: pair[0])
        goals, met = [], True
        if run["goal"] > 0:
            goals.append(f"{run['goal']:g}")
            met = station <= run["goal"] * floor
        if run["limit"] > 0:
            goals.append(f"under {text(run['limit'], {})}")
            met = met and station < run["limit"]
        apart = f"{spread(sides['station'])} / {spread(sides['floor'])}"
        table.append((row, text(station, run), text(floor, run), ratio(station, floor),
                      ", ".join(goals), "yes" if met else "no", apart))
    widths = [max(len(line[column]) for line in table) for column in range(len(table[0]))]
    table.insert(1, tuple("-" * width for width in widths))
    for line in table:
        print("| " + " | ".join(cell.ljust(width) for cell, width in zip(line, widths)) + " |")


main(sys.argv[1], sys.argv[2:])
