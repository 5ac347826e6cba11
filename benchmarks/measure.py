#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
"""Measures the release build against baselines and prints a table; "./dev bench" builds it first.

zorvi_benchmarks measures what is done inside of a program, whole programs are measured here. A
figure is the minimum of its repetitions: what else the machine does only ever adds to it.
"""

import json
import os
import shutil
import sqlite3
import subprocess
import tempfile
import time

BUILD = "build/release"
STATION = f"{BUILD}/bin/zorvi_assembly_test"
BASELINE = f"{BUILD}/benchmarks/zorvi_baseline_process"
LOGS = 10_000


def row(name, goal, stations, baselines):
    def text(figure):
        if name.startswith("memory"):
            return f"{figure / 2**20:.1f} MiB"
        units = (("s", 1), ("ms", 1e-3), ("µs", 1e-6))
        unit, factor = next((pair for pair in units if figure >= pair[1]), units[-1])
        return f"{figure / factor:.3g} {unit}"

    station, baseline = min(stations), min(baselines)
    met = "yes" if station <= goal * baseline else "no"
    return name, text(station), text(baseline), f"{station / baseline:.2f}", f"{goal:g}", met


def measured(name, goal, station, baseline, repetitions=5):
    """In turn, so that other load hits both sides."""
    pairs = [(station(), baseline()) for _ in range(repetitions)]
    return row(name, goal, *zip(*pairs))


def run(*command):
    """Returns how long a program takes."""
    start = time.monotonic()
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL)
    return time.monotonic() - start


def rows_inside(folder):
    # On one core, so that it does not matter where the other thread or the X server happens to run.
    run("taskset", "-c", str(os.cpu_count() - 1), f"{BUILD}/benchmarks/zorvi_benchmarks",
        "--benchmark_repetitions=40", "--benchmark_min_time=0.02",
        "--benchmark_enable_random_interleaving=true", f"--benchmark_out={folder}/results.json")
    with open(f"{folder}/results.json", encoding="utf-8") as file:
        results = [one for one in json.load(file)["benchmarks"] if one["run_type"] == "iteration"]
    figures = {}
    for one in sorted(results, key=lambda one: one["family_index"]):
        name, side, goal = one["name"].split("/")[:3]
        sides = figures.setdefault((name, float(goal)), {"station": [], "baseline": []})
        sides[side].append(one["real_time"] / 1e9 / one.get("per_iteration", 1))
    return [row(*key, *sides.values()) for key, sides in figures.items()]


def first_frame(program):
    """Until the first frame has been handed to the screen, as Qt's own log of painting has it."""
    environment = dict(os.environ, QT_LOGGING_RULES="qt.widgets.painting=true")
    start = time.monotonic()
    with subprocess.Popen(program, env=environment, stderr=subprocess.PIPE) as process:
        next(line for line in process.stderr if b"painting: Flushing" in line)
        seconds = time.monotonic() - start
        process.kill()
    return seconds


def when_idle(measure, program):
    with subprocess.Popen(program) as process:
        time.sleep(3)
        figure = measure(process.pid)
        process.kill()
    return figure


def resident(pid):
    with open(f"/proc/{pid}/statm", encoding="ascii") as file:
        return int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")


def idle_seconds(pid):
    """The CPU time of 20 s."""
    clock = ~pid << 3 | 2  # as clock_getcpuclockid() has it
    before = time.clock_gettime(clock)
    time.sleep(20)
    return time.clock_gettime(clock) - before


def rows_of_processes():
    return [
        measured("process start to first frame", 2, lambda: first_frame(STATION),
                 lambda: first_frame(BASELINE), 15),
        measured("memory", 1.3, lambda: when_idle(resident, STATION),
                 lambda: when_idle(resident, BASELINE), 3),
        measured("idle for 20 s", 2, lambda: when_idle(idle_seconds, STATION),
                 lambda: when_idle(idle_seconds, BASELINE), 1)]


def write_logs(folder):
    """A year of logs; one in twenty misses a band."""
    with open("debian/tests/log.txt", encoding="utf-8", newline="") as file:
        template = file.read()
    for number in range(LOGS):
        date = time.gmtime(1735689600 + number * 365 * 86400 // LOGS)
        log = template.replace("DATE", time.strftime("%a %b %-d %H:%M:%S %Y", date))
        if number % 20 == 0:
            log = log.replace(f"Range {number % 13}: 1", f"Range {number % 13}: 0", 1)
        with open(f"{folder}/ZORVI_{number}.txt", "w", encoding="utf-8", newline="") as file:
            file.write(log.replace("SERIAL", str(number)))


def multiply(database, times):
    """Adds copies of the attempts under other serials."""
    connection = sqlite3.connect(database)
    columns = [column[1] for column in connection.execute("PRAGMA table_info(attempts)")][1:]
    copied = ", ".join(columns).replace("serial", "serial || '-' || ?")
    for copy in range(1, times):
        connection.execute(f"INSERT INTO attempts ({', '.join(columns)}) "
                           f"SELECT {copied} FROM attempts WHERE id <= {LOGS}", [copy])
    connection.commit()


def rows_of_yield(folder):
    logs, database, none = f"{folder}/logs", f"{folder}/database", "/dev/null"
    large, million = f"{folder}/100,000", f"{folder}/1,000,000"

    def imported(station):
        return run(f"{BUILD}/bin/zorvi_yield", "import", "--station", station,
                   "--database", database, logs) / LOGS

    def imported_into(stored):
        shutil.copy(stored, database)
        return imported("Line 2")

    def rows_stored():
        """The sqlite3 tool reads the same files and stores a row of the same size for each."""
        shutil.copy(none, database)
        return run("sqlite3", database, "CREATE TABLE logs AS SELECT name, substr(data, 1, 80) "
                                        f"FROM fsdir('{logs}')") / LOGS

    def reported(stored):
        return run(f"{BUILD}/bin/zorvi_yield", "report", "--database", stored, "--output", none)

    def rows_scanned():
        return run("sqlite3", million, "SELECT max(station_id), max(serial), max(tested_at), "
                                       "max(marks) FROM attempts")

    os.mkdir(logs)
    write_logs(logs)
    for path, times in ((large, 10), (million, 100)):
        imported("Line 1")
        multiply(database, times)
        os.rename(database, path)
    return [
        measured("log imported", 3, lambda: imported_into(none), rows_stored),
        measured("log imported beside 1,000,000 attempts, to none", 2,
                 lambda: imported_into(million), lambda: imported_into(none)),
        measured("report over 1,000,000 attempts", 4, lambda: reported(million), rows_scanned),
        measured("a tenth of that, to a report over 100,000", 1.2,
                 lambda: reported(million) / 10, lambda: reported(large))]


def main():
    with tempfile.TemporaryDirectory() as folder:
        rows = [("row", "station", "baseline", "ratio", "goal", "met"),
                *rows_inside(folder), *rows_of_processes(), *rows_of_yield(folder)]
    widths = [max(map(len, column)) for column in zip(*rows)]
    rows.insert(1, ["-" * width for width in widths])
    for cells in rows:
        print("| " + " | ".join(cell.ljust(width) for cell, width in zip(cells, widths)) + " |")


main()
