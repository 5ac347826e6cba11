# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later

"""A second opinion on the figures of the report, written from the words of docs/quality-guide.md
and docs/log-format.md: makes up the logs of a line and says what the report has to say of them.

model.py SEED COUNT prints as JSON so many plants with their logs, requests and figures."""

import collections
import datetime
import fnmatch
import json
import random
import sys

import numpy
from scipy import stats

BANDS = [13] * 9 + [2] * 30 + [0] + [13] * 4
TAIL = 0.00135
NOW = datetime.datetime(2026, 11, 21, 15, 0)
SECOND = datetime.timedelta(seconds=1)

# marks: for each of the 44 components a text with 0 or 1 for each band.
Log = collections.namedtuple("Log", "station serial time marks")
Attempt = collections.namedtuple("Attempt", "station serial time marks missed ended result")


def tested(tests_18):
    return [c for c in range(44) if c != 39 and (tests_18 or c != 18)]


def order_of(log):
    bits = "".join(log.marks)
    packed = bytes(int(bits[i : i + 8][::-1], 2) for i in range(0, len(bits), 8))
    return log.time, log.station.encode(), bits.count("1"), packed


# What logs mean


def continues(attempt, log):
    """attempt: its logs so far."""
    before = attempt[-1].marks
    grows = all(a <= b for old, new in zip(before, log.marks) for a, b in zip(old, new))
    last = max(c for c in range(44) if "1" in before[c])
    one_run = before[:last] == log.marks[:last]
    limit = 60 if "1" in before[43] else 30 * 60
    return grows and one_run and (log.time - attempt[-1].time) <= limit * SECOND


def outcome(marks, tests_18):
    """The missed bands by component, and where the run ended early."""
    tried = tested(tests_18)
    untouched = 0
    while untouched < len(tried) and "1" not in marks[tried[-1 - untouched]]:
        untouched += 1
    ended = tried[-untouched] if untouched >= 2 else None
    if ended is not None:
        tried = tried[:-untouched]
    missed = {c: [b for b, mark in enumerate(marks[c]) if mark == "0"] for c in tried}
    return {c: bands for c, bands in missed.items() if bands}, ended


def attempts_of(logs, tests_18):
    """All attempts, those of a unit in their order."""
    groups = collections.defaultdict(list)
    for log in sorted(set(logs), key=order_of):
        runs = groups[log.station, log.serial]
        if "1" not in "".join(log.marks):
            continue
        if runs and continues(runs[-1], log):
            runs[-1].append(log)
        else:
            runs.append([log])
    units = collections.defaultdict(list)
    for runs in groups.values():
        for run in runs:
            first = next(log for log in run if log.marks == run[-1].marks)
            missed, ended = outcome(first.marks, tests_18[first.station])
            result = "ended" if ended is not None else "failed" if missed else "passed"
            units[first.serial].append(Attempt(*first, missed, ended, result))
    return {serial: sorted(unit, key=order_of) for serial, unit in units.items()}


# What the report counts


def limits(units, passed, of):
    counts = numpy.arange(units + 1)
    if units == 0 or of == 0:
        return [0, 0]
    low = counts[stats.binom.cdf(counts, units, passed / of) >= TAIL][0]
    high = counts[stats.binom.sf(counts - 1, units, passed / of) >= TAIL][-1]
    return [int(low), int(high)]


def tally(units):
    first = [unit[0].result for unit in units]
    last = [unit[-1].result for unit in units]
    attempts = sum(map(len, units))
    return [len(units), attempts, first.count("passed"), last.count("passed"), first.count("ended")]


def in_time(day, request):
    return request["since"] <= day <= (request["until"] or "9999-12-31")


def selected(units, request):
    def asked(first):
        day = first.time.date().isoformat()
        return in_time(day, request) and request["station"] in ("", first.station)

    def left_out(serial):
        return any(fnmatch.fnmatchcase(serial, pattern) for pattern in request["without"])

    asked_for = [unit for unit in units.values() if asked(unit[0])]
    kept = [unit for unit in asked_for if not left_out(unit[0].serial)]
    return kept, len(asked_for) - len(kept)


def by_number(units):
    rows = [[0, 0, 0] for _ in range(min(10, max(map(len, units), default=0)))]
    for unit in units:
        for number, attempt in enumerate(unit):
            row = rows[min(number, 9)]
            row[0] += 1
            row[1] += attempt.result == "passed"
            row[2] += attempt.result == "ended"
    return rows


def false_failures(units):
    failed = retested = passed = 0
    for unit in units:
        whole = [attempt for attempt in unit if attempt.result != "ended"]
        for attempt, following in zip(whole, whole[1:] + [None]):
            if attempt.result == "passed":
                continue
            failed += 1
            if following and following.station == attempt.station:
                if following.time - attempt.time <= 3600 * SECOND:
                    retested += 1
                    passed += following.result == "passed"
    return [failed, retested, passed]


def control(units, tests_18, c):
    firsts = [unit[0] for unit in units]
    here = [a for a in firsts if c in tested(tests_18[a.station])]
    tried = [a for a in here if a.ended is None or c < a.ended]
    missed = [a.missed[c] for a in tried if c in a.missed]
    bands = [sum(band in m for m in missed) for band in range(BANDS[c])]
    return [len(tried), len(missed), sum(a.ended == c for a in firsts), bands]


def tested_unit(unit):
    def row(attempt):
        bands = [[c, band] for c, missed in sorted(attempt.missed.items()) for band in missed]
        outcome = [attempt.result, bands, -1 if attempt.ended is None else attempt.ended]
        return [attempt.serial, attempt.time.isoformat(), attempt.station, outcome]

    return [row(unit[0]), row(unit[-1]), len(unit)]


def newest_first(unit):
    return datetime.datetime(9999, 1, 1) - unit[-1].time, unit[-1].serial


def report(logs, tests_18, request):
    everything = attempts_of(logs, tests_18)
    units, left_out = selected(everything, request)
    total = tally(units)

    def judged(part):
        figures = tally(part)
        return figures + limits(figures[0], total[2], total[0])

    days = collections.defaultdict(list)
    off_axis = []
    for unit in units:
        day = unit[0].time.date()
        ahead = (day - NOW.date()).days > 1
        (off_axis if day.year < 2000 or ahead else days[day.isoformat()]).append(unit)
    recent = [(NOW.date() - datetime.timedelta(days=ago)).isoformat() for ago in range(8)]
    recent = [day for day in recent if in_time(day, request)]
    stations = []
    for name in sorted({unit[0].station for unit in units}):
        here = [unit for unit in units if unit[0].station == name]
        missed = [sum(c in unit[0].missed for unit in here) for c in range(44)]
        stations.append([name] + judged(here) + [missed])
    ages = []
    for name in sorted(tests_18):
        past = [a for a in logs if a.station == name and a.time <= NOW]
        times = [a.time for a in past if "1" in "".join(a.marks)]
        if request["station"] in ("", name):
            age = (NOW - max(times)).total_seconds() if times else -1
            ages.append([name, max(times).isoformat() if times else "", int(age)])
    not_complete = [unit for unit in units if unit[-1].result != "passed"]
    repeated = [unit for unit in units if len(unit) > 1]
    repeated.sort(key=lambda unit: (-len(unit), newest_first(unit)))
    return {
        "total": total,
        "left out": left_out,
        "days": [[day] + judged(part) for day, part in sorted(days.items())],
        "off axis": tally(off_axis),
        "recent days": [[day] + judged(days.get(day, [])) for day in recent],
        "by number": by_number(units),
        "false failures": false_failures(units),
        "stations": stations,
        "controls": [control(units, tests_18, c) for c in range(44)],
        "open": [tested_unit(unit) for unit in sorted(not_complete, key=newest_first)],
        "repeated": [tested_unit(unit) for unit in repeated],
        "ages": ages,
    }


# Plants


def run(tests_18, end):
    """The marks of a run up to a component, with a few misses."""
    marks = ["0" * count for count in BANDS]
    for c in tested(tests_18):
        if c < end:
            marks[c] = "1" * BANDS[c]
            if random.random() < 0.01:
                marks[c] = "".join(random.choice("01") for _ in marks[c])
    return marks


def saves(marks, begin):
    """Logs of one run: a few in its middle, and one or two at its end."""
    for _ in range(random.choice([0, 0, 0, 1, 2])):
        cut = random.randrange(44)
        part = marks[: cut + 1] + ["0" * count for count in BANDS[cut + 1 :]]
        part[cut] = "".join(random.choice("0" + mark) for mark in part[cut])
        yield begin, tuple(part)
        begin += random.choice([0, 5, 60, 61, 300]) * SECOND
    yield begin, tuple(marks)
    if random.random() < 0.2:
        yield begin + random.choice([1, 60, 61, 1800, 1801]) * SECOND, tuple(marks)


def unit_logs(serial, stations, day):
    time = datetime.datetime.combine(day, datetime.time(6)) + random.randrange(36000) * SECOND
    station = random.choice(list(stations))
    visits = random.choice([1] * 12 + [2, 2, 2, 3, 4, 13])
    for _ in range(visits):
        end = random.choice([44] * 12 + [43, 42, 41, 40, 38, 19, 18, 5, 0])
        marks = run(stations[station], end)
        for _ in range(random.choice([1, 1, 1, 2])):  # the same once more
            for time, part in saves(marks, time):
                yield Log(station, serial, time, part)
            time += random.choice([0, 30, 60, 61, 900, 1800, 1801, 3600, 3601, 90000]) * SECOND
        if random.random() < 0.4:
            station = random.choice(list(stations))


def plant():
    names = ["Station 1", "Station 2", "line \u00e4", "\u4e00"][: random.choice([1, 3, 4])]
    tests_18 = {name: random.random() < 0.4 for name in names}
    odd = ["", " ", "KG-/4", "\u00e4\u00df", "x\ty", "'\"", "\U0001f600", "KG-1", "KG-22", "kg-1"]
    serials = odd + ["0908-%04d" % number for number in range(random.choice([0, 20, 150]))]
    days = [NOW.date() - datetime.timedelta(days=ago) for ago in range(random.choice([3, 12, 40]))]
    days += [NOW.date() + datetime.timedelta(days=ahead) for ahead in (1, 2)]
    days += [datetime.date(1999, 12, 31), datetime.date(2000, 1, 1)]
    patterns = [[], ["KG-*"], ["?", "0908-00[1-3]*"], ["*"], ["[!0]*", "KG-?4"]]
    logs = []
    for serial in serials:
        logs += unit_logs(serial, tests_18, random.choice(days))
    random.shuffle(logs)
    requests = [{"since": "", "until": "", "station": "", "without": []}]
    for _ in range(3):
        first, last = [day.isoformat() for day in sorted(random.sample(days, 2))]
        request = {"since": random.choice(["", first]), "until": random.choice(["", last])}
        request["station"] = random.choice(["", random.choice(logs).station])
        request["without"] = random.choice(patterns)
        requests.append(request)
    # Whether a station tests component 18 is declared, or told by a mark in any log.
    told = {log.station for log in logs if "1" in log.marks[18]}
    declared = {n: tests_18[n] and (n not in told or random.random() < 0.3) for n in names}
    known = {log.station: tests_18[log.station] for log in logs}
    cases = [{"request": r, "figures": report(logs, known, r)} for r in requests]
    rows = [[a.station, a.serial, a.time.isoformat(), "".join(a.marks)[::-1]] for a in logs]
    return {"declared": declared, "logs": rows, "cases": cases}


def main():
    random.seed(int(sys.argv[1]))
    plants = [plant() for _ in range(int(sys.argv[2]))]
    table = []
    for _ in range(200):
        of = random.choice([1, 30, 1000, 10**6])
        units = random.choice([0, 1, random.randint(1, 300), random.randint(1, 10**5)])
        passed = random.choice([0, of, random.randint(0, of), of - random.randint(0, of) // 20])
        table.append([units, passed, of] + limits(units, passed, of))
    json.dump({"now": NOW.isoformat(), "plants": plants, "limits": table}, sys.stdout)


if __name__ == "__main__":
    main()
