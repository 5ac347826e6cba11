#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
"""Draws how the cost of one grows with how many there are, from the JSON of the growth benchmarks.

Usage: growth_pictures.py RESULTS FOLDER; writes growth-NAME.svg for each kind into the folder. A point
is the smallest of its repetitions; messages and units count the CPU time of all threads.
"""

import io
import json
import sys

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plt

SECONDS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}
PICTURES = {
    "messages": ("messages of the unit", "CPU time per message / µs", 1e6),
    "runs": ("units tested, one after the other", "CPU time per unit / ms", 1e3),
    "logs": ("logs in the folder", "time to write one more / ms", 1e3),
    "ports": ("MIDI ports listed by the system", "time of one poll / µs", 1e6),
}


def points(results, name):
    """{how many: (seconds for one, MiB resident or None)}"""
    found = {}
    for run in results["benchmarks"]:
        kind, many = run["name"].split("/")[:2]
        if kind != name or run["run_type"] != "iteration":
            continue
        time = "cpu_time" if "/process_time" in run["name"] else "real_time"
        seconds = run[time] * SECONDS[run["time_unit"]] / run.get("things", 1)
        memory = run["bytes"] / 2**20 if "bytes" in run else None
        if int(many) not in found or seconds < found[int(many)][0]:
            found[int(many)] = (seconds, memory)
    return found


def draw(found, labels, path):
    what, unit, factor = labels
    many = sorted(found)
    figure, time = plt.subplots(figsize=(6, 3.4), layout="constrained")
    time.plot(many, [found[n][0] * factor for n in many], "o-", color="C0")
    time.set(xlabel=what, ylabel=unit, xscale="log")
    time.set_ylim(bottom=0)
    time.grid(alpha=0.3)
    if found[many[0]][1] is not None:
        memory = time.twinx()
        memory.plot(many, [found[n][1] for n in many], "s--", color="C1")
        memory.set_ylabel("resident memory / MiB", color="C1")
        memory.set_ylim(bottom=0)
        time.yaxis.label.set_color("C0")
    # Without a date, so that the same figures give the same file.
    picture = io.StringIO()
    figure.savefig(picture, metadata={"Date": None})
    with open(path, "w", encoding="utf-8") as file:
        file.writelines(line.rstrip() + "\n" for line in picture.getvalue().splitlines())


def main(source, folder):
    matplotlib.rcParams["svg.hashsalt"] = "zorvi"
    with open(source, encoding="utf-8") as file:
        results = json.load(file)
    for name, labels in PICTURES.items():
        found = points(results, name)
        draw(found, labels, f"{folder}/growth-{name}.svg")
        print(name)
        for many, (seconds, memory) in sorted(found.items()):
            resident = "" if memory is None else f"  {memory:.1f} MiB"
            print(f"  {many:>7}  {seconds * labels[2]:.4g} {labels[1].split('/')[1]}{resident}")


main(*sys.argv[1:])
