# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later

"""A second opinion on the figures of a report, written from the words of docs/quality-guide.md and
docs/database.md: stores the attempts of random plants by SQL, has PROGRAM report on them, and
prints the figures of the JSON that differ. Chromium checks the page of each plant (pagecheck.js);
with ZORVI_AXE, a copy of axe.min.js, axe-core does too.

model.py PROGRAM SEED"""

import collections
import datetime
import fnmatch
import itertools
import json
import os
import pathlib
import random
import re
import sqlite3
import statistics
import subprocess
import sys
import tempfile

from scipy import stats

BANDS = [13] * 9 + [2] * 30 + [0] + [13] * 4
TAIL = 0.00135
SECOND = datetime.timedelta(seconds=1)
DAY = datetime.timedelta(days=1)
MAX_NOT_PASSED, MAX_RETESTED = 5000, 200

# started: None for an attempt that was imported without its run. marks: for each of the 44
# components a text with 0 or 1 for each band. missed: the missed bands of each failed control.
COLUMNS = "station serial time started marks missed aborted result"
Attempt = collections.namedtuple("Attempt", COLUMNS)


def tested(tests_18):
    return [c for c in range(44) if c != 39 and (tests_18 or c != 18)]


def attempt(station, serial, time, started, marks, tests_18):
    order = tested(tests_18)
    reached = max((i + 1 for i, c in enumerate(order) if "1" in marks[c]), default=0)
    aborted = order[reached] if reached <= len(order) - 2 else None
    if aborted is not None:
        order = order[:reached]
    missed = {c: [b for b, mark in enumerate(marks[c]) if mark == "0"] for c in order}
    missed = {c: bands for c, bands in missed.items() if bands}
    result = "aborted" if aborted is not None else "failed" if missed else "passed"
    return Attempt(station, serial, time, started, marks, missed, aborted, result)


def packed(marks):
    return int("".join(marks)[::-1], 2).to_bytes(29, "little")


def sort_key(each):
    count = "".join(each.marks).count("1")
    return each.time, each.station.encode(), count, packed(each.marks)


def day_of(unit):
    return unit[0].time.date()


def is_requested(day, request):
    return request["since"] <= day.isoformat() <= (request["until"] or "9999-12-31")


def select(units, request):
    """The units of a report, and the number of excluded ones."""

    def is_excluded(unit):
        return any(fnmatch.fnmatchcase(unit[0].serial, wild) for wild in request["exclude"])

    units = [unit for unit in units if is_requested(day_of(unit), request)]
    units = [unit for unit in units if request["station"] in ("", unit[0].station)]
    return [unit for unit in units if not is_excluded(unit)], sum(map(is_excluded, units))


def results(units, which, result="passed"):
    return [unit[which].result for unit in units].count(result)


def share(part, whole):
    return {"count": part, "of": whole, "share": part / whole if whole else None}


def limits(part, units):
    of, share_of_all, passed = len(part), results(units, 0) / len(units), results(part, 0)
    low = sum(stats.binom.cdf(range(of + 1), of, share_of_all) < TAIL)
    high = of - sum(stats.binom.sf(range(-1, of), of, share_of_all) < TAIL)
    position = "below LCL" if passed < low else "above UCL" if passed > high else "within"
    return {"lcl": low / of, "ucl": high / of, "position": position}


def yields(part, units):
    """The columns that days, periods and stations share."""
    return {
        "units": len(part),
        "first_pass_yield": share(results(part, 0), len(part)),
        "control_limits": limits(part, units) if part else None,
        "final_yield": share(results(part, -1), len(part)),
        "aborted": results(part, 0, "aborted"),
    }


def periods(units):
    """The name of the periods, and of each the first day and the units."""
    days = sorted(map(day_of, units))
    span = (days[-1] - days[0]).days if days else None
    name = None if span is None else "day" if span < 70 else "week" if span < 490 else "month"

    def begin(unit):
        day = day_of(unit)
        return {"day": day, "week": day - day.weekday() * DAY, "month": day.replace(day=1)}[name]

    parts = itertools.groupby(sorted(units, key=day_of), begin)
    return name, [(first, list(part)) for first, part in parts]


def false_failures(units):
    failed = passed = 0
    for unit in units:
        ended = [each for each in unit if each.result != "aborted"]
        failed += sum(each.result == "failed" for each in ended)
        for each, following in zip(ended, ended[1:]):
            if (each.result, following.result) == ("failed", "passed"):
                soon = following.time - each.time <= DAY / 24
                passed += soon and following.station == each.station
    return share(passed, failed)


def test_time(units, station=None):
    passed = [each for unit in units for each in unit if each.result == "passed"]
    times = [a.time - a.started for a in passed if a.started and station in (None, a.station)]
    times = [time.total_seconds() for time in times if 0 * DAY <= time <= DAY]
    return {"seconds": statistics.median(times), "attempts": len(times)} if times else None


def top_failure(units):
    counts = [sum(c in unit[0].missed for unit in units) for c in range(44)]
    top = counts.index(max(counts))
    return {"component": top, "failed_units": counts[top]} if counts[top] else None


def station_rows(units):
    for name in sorted({unit[0].station for unit in units}, key=str.encode):
        part = [unit for unit in units if unit[0].station == name]
        row = {"station": name, "attempts": sum(map(len, part))}
        row["median_test_time"] = test_time(units, name)
        yield {**row, "top_failure": top_failure(part), **yields(part, units)}


def number_rows(units):
    for number in range(1, min(10, max(map(len, units), default=0)) + 1):
        last = None if number == 10 else number
        ends = [each.result for unit in units for each in unit[number - 1 : last]]
        passed, aborted = share(ends.count("passed"), len(ends)), ends.count("aborted")
        yield {"number": number, "attempts": len(ends), "passed": passed, "aborted": aborted}


def attempt_row(each, prefix):
    row = {"tested_at": each.time.isoformat(), "station": each.station, "result": each.result}
    return {prefix + key: value for key, value in row.items()}


def unit_rows(units):
    """Those not passed and those retested, newest first."""
    units = sorted(units, key=lambda unit: unit[0].serial.encode())
    units.sort(key=lambda unit: unit[-1].time, reverse=True)
    rows = [{"serial": unit[0].serial, "attempts": len(unit), **attempt_row(unit[0], "first_"),
             **attempt_row(unit[-1], "last_")} for unit in units]  # fmt: skip
    retested = [row for row in rows if row["attempts"] > 1]
    retested.sort(key=lambda row: row["attempts"], reverse=True)
    columns = [("serial", "serial"), ("attempts", "attempts"), ("tested_at", "last_tested_at"),
               ("station", "last_station")]  # fmt: skip
    rows = [row for row in rows if row["last_result"] != "passed"]
    return {
        "not_passed": [{a: row[b] for a, b in columns} for row in rows[:MAX_NOT_PASSED]],
        "retested": retested[:MAX_RETESTED],
        "retested_units": len(retested),
    }


def control_rows(units, tests_18):
    firsts = [unit[0] for unit in units]
    ends = [each.aborted for each in firsts if each.aborted is not None]
    missed = [[each.missed[c] for each in firsts if c in each.missed] for c in range(44)]
    failed = sorted((c for c in range(44) if missed[c]), key=lambda c: -len(missed[c]))
    sums = list(itertools.accumulate(len(missed[c]) for c in failed))

    def row(c):
        here = [each for each in firsts if c in tested(tests_18[each.station])]
        reached = sum(each.aborted is None or c < each.aborted for each in here)
        return {"component": c, "failed_units": share(len(missed[c]), reached)}

    return {
        "controls": [row(c) for c in range(44)],
        "pareto": [
            {**row(c), "share": len(missed[c]) / sums[-1], "cumulative": upto / sums[-1]}
            for c, upto in zip(failed, sums)
        ],
        "missed_bands": [
            {"component": c, "band": b, "failed_units": sum(b in bands for bands in missed[c])}
            for c in failed[:3]
            for b in range(BANDS[c])
        ],
        "aborted": [
            {"component": c, "first_attempts": share(ends.count(c), len(ends))}
            for c in sorted(set(ends))
        ],
    }


def last_log_rows(attempts, stations, request, now):
    for name in sorted(stations, key=str.encode):
        times = [each.time for each in attempts if each.station == name and each.time <= now]
        row = {"station": name, "tested_at": None, "age_seconds": None}
        if times:
            row["tested_at"] = max(times).isoformat()
            row["age_seconds"] = (now - max(times)).total_seconds()
        if request["station"] in ("", name):
            yield row


def figures(attempts, tests_18, request, made_at):
    units = itertools.groupby(sorted(attempts, key=lambda each: each.serial), lambda a: a.serial)
    units = [sorted(unit, key=sort_key) for _, unit in units]
    units, excluded = select(units, request)
    now, of = datetime.datetime.fromisoformat(made_at), len(units)
    plausible = [u for u in units if day_of(u).year >= 2000 and (day_of(u) - now.date()).days <= 1]
    name, parts = periods(plausible)
    recent = [now.date() - ago * DAY for ago in range(8)]
    recent = [(d, [u for u in units if day_of(u) == d]) for d in recent if is_requested(d, request)]

    def rows_of(parts):
        return [{"first_tested": first.isoformat(), **yields(part, units)} for first, part in parts]

    settings = {key: value or None for key, value in request.items()}
    settings |= {"exclude": request["exclude"], "excluded_units": excluded, "made_at": made_at}
    return {
        "request": settings,
        "last_logs": list(last_log_rows(attempts, tests_18, request, now)),
        "recent_days": rows_of(recent),
        "totals": {
            "units": of,
            "attempts": sum(map(len, units)),
            "first_pass_yield": share(results(units, 0), of),
            "final_yield": share(results(units, -1), of),
            "aborted": share(results(units, 0, "aborted"), of),
            "false_failures": false_failures(units),
            "median_test_time": test_time(units),
        },
        "implausible_dates": of - len(plausible),
        "period": name,
        "trend": rows_of(parts),
        "stations": list(station_rows(units)),
        **control_rows(units, tests_18),
        "attempts_by_number": list(number_rows(units)),
        **unit_rows(units),
    }


TOMORROW = datetime.date.today() + DAY
# The days from the first to the last unit, and the number of units: one day, whose lower control
# limit is below all yields; the bounds of days, weeks, months and plausible dates; more units than
# the lists have.
PLANTS = [(0, 30), (69, 150), (70, 20), (489, 300)]
PLANTS += [((TOMORROW - datetime.date(2000, 1, 1)).days, 0), (490, MAX_NOT_PASSED + 400)]
STATIONS = ["Station 1", "Assembly line 2 of hall 7, station 2", "line <\u00e4>", "\u4e00"]
SERIALS = ["", " ", "KG-/4", "\u00e4\u00df", "'\"", "\U0001f600", "\uff20", "KG-1", "KG-22", "kg-1"]
SERIALS += ["</td><script>console.log('WRONG')</script>&amp;", "\t\x01\u202e\ufffe\uffff"]


def random_attempt(station, serial, tests_18, time, units):
    """All pass at the last station, none in the longest plant; a tenth of the days is bad."""
    end = random.choice([44] * 12 + [43, 42, 41, 40, 38, 19, 18, 5, 1])
    failures = 0.2 if time.toordinal() % 10 == 3 else 0.01
    if station == STATIONS[-1]:
        end, failures = 44, 0
    marks = ["0" * count for count in BANDS]
    for c in tested(tests_18):
        if c < end:
            bad = random.random() < failures or units > MAX_NOT_PASSED and c == end // 2
            marks[c] = "".join(random.choice("01" if bad else "1") for _ in marks[c])
    duration = random.choice([1, 60, 61, 150, 150, 3600, 86400, 86401, -1]) * SECOND
    started = time - duration + random.choice([0, 0, 1, 500]) * SECOND / 1000
    started = random.choice([None] + [started] * 4)
    return attempt(station, serial, time, started, marks, tests_18)


def unit_attempts(serial, stations, day, units):
    time = datetime.datetime.combine(day, datetime.time(6)) + random.randrange(36000) * SECOND
    station = random.choice(list(stations))
    for _ in range(random.choice([1] * 12 + [2, 2, 2, 3, 4, 13])):
        yield random_attempt(station, serial, stations[station], time, units)
        time += random.choice([0, 1, 30, 60, 900, 3600, 3601, 90000]) * SECOND
        if random.random() < 0.4:
            station = random.choice(list(stations))


def plant(span, units):
    """Attempts, and whether each station tests component 18."""
    names = STATIONS if units < MAX_NOT_PASSED else STATIONS[:1]
    tests_18 = {name: random.random() < 0.4 for name in names}
    days = [TOMORROW - ago * DAY for ago in range(span + 1)]
    serials = SERIALS + ["0908-%04d" % number for number in range(units)]
    unit_days = [TOMORROW + DAY, datetime.date(1999, 12, 31), days[0], days[-1]]
    unit_days += random.choices(days, k=len(serials))
    attempts = {}  # one of equal ones
    for serial, day in zip(serials, unit_days):
        for each in unit_attempts(serial, tests_18, day, units):
            attempts[serial, sort_key(each)] = each
    return random.sample(list(attempts.values()), len(attempts)), tests_18


def random_requests(attempts, stations):
    """All units, those of one day, of a station, and others."""
    first, last = sorted(each.time.date().isoformat() for each in random.sample(attempts, 2))
    everything = {"since": "", "until": "", "station": "", "exclude": []}
    yield everything
    yield {**everything, "since": first, "until": first}
    yield {**everything, "station": stations[-1]}
    yield {**everything, "since": first, "station": stations[0]}
    for exclude in ["KG-*"], ["?", "0908-00[1-3]*"], ["*"], ["<*", "[!0]*", "KG-?4"]:
        yield {**everything, "until": last, "exclude": exclude}


def started_text(each):
    return each.started and each.started.isoformat(timespec="milliseconds")


def store(program, path, attempts, tests_18):
    with tempfile.TemporaryDirectory() as no_logs:
        for name in tests_18:
            run([program, "import", "--station", name, "--database", path, no_logs])
    with sqlite3.connect(path) as database:
        insert = """INSERT INTO attempts
            (station_id, serial, tested_at, marks, passed, tests_18, started_at)
            SELECT id, ?, ?, ?, 0, ?, ? FROM stations WHERE name = ?"""
        for each in attempts:
            times = each.time.isoformat(), packed(each.marks), tests_18[each.station]
            database.execute(insert, (each.serial, *times, started_text(each), each.station))


def run(command):
    done = subprocess.run(command, capture_output=True, text=True, timeout=100, check=False)
    if done.returncode:
        sys.exit(f"{command}: {done.stdout}{done.stderr}")
    return done.stdout + done.stderr


def browse(page, *options):
    """What Chromium logs on its console, and makes of the page."""
    quiet = ["--no-first-run", "--disable-background-networking", "--disable-component-update"]
    with tempfile.TemporaryDirectory() as profile:
        command = ["chromium", "--headless", "--no-sandbox", "--disable-gpu", "--disable-sync"]
        return run([*command, *quiet, f"--user-data-dir={profile}", *options, page.as_uri()])


def check_pages(folder, pages):
    """Each page with its figures, as narrow as a phone and wide; for axe-core light and dark."""
    script = pathlib.Path(__file__).with_name("pagecheck.js").read_text()
    if "ZORVI_AXE" in os.environ:
        script += pathlib.Path(os.environ["ZORVI_AXE"]).read_text()
        script += """axe.run().then(found => { found.violations.forEach(each =>
            console.log('WRONG: ' + each.id + ' ' + each.nodes[0].html));
            console.log('CHECKED by axe'); });"""
    frames = ""
    for number, (page, data) in enumerate(pages):
        data = data.replace("</", "<\\/")
        file = folder / f"{number}.html"
        file.write_text(f"{page}<script>const figures = {data};\n{script}</script>")
        for width in 400, 1600:
            frames += f"<iframe src='{file.name}' width={width} height=800></iframe>"
    (folder / "frames.html").write_text(frames)
    options = ["--enable-logging=stderr", "--virtual-time-budget=20000", "--dump-dom"]
    for scheme in "01" if "ZORVI_AXE" in os.environ else "0":
        dark = f"--blink-settings=preferredColorScheme={scheme}"
        printed = browse(folder / "frames.html", *options, dark)
        if re.search("WRONG|Uncaught", printed):
            sys.exit("\n".join(re.findall(".*(?:WRONG|Uncaught).*", printed)))
        if printed.count("CHECKED") != 2 * len(pages) * script.count("'CHECKED"):
            sys.exit(f"{printed.count('CHECKED')} of {2 * len(pages)} pages checked")


def check_paper(folder, page):
    """A long list ends, and closed tables are open."""
    (folder / "long.html").write_text(page)
    browse(folder / "long.html", f"--print-to-pdf={folder / 'page.pdf'}")
    sheets = (folder / "page.pdf").read_bytes().count(b"/Type /Page\n")
    if not 8 < sheets < 14:  # with closed tables they are 7
        sys.exit(f"{sheets} sheets of paper")


def rounded(text):
    return json.loads(text, parse_float=lambda digits: round(float(digits), 9))


def check_export(text, attempts):
    """Of the largest plant longer than what a pipe takes at once."""
    expected = [
        {"station": each.station, "serial": each.serial, "tested_at": each.time.isoformat(),
         "started_at": started_text(each), "passed": each.result == "passed",
         "aborted_component": each.aborted,
         "missed_bands": [{"component": c, "band": band}
                          for c, bands in each.missed.items() for band in bands]}
        for each in sorted(attempts, key=lambda each: (each.serial.encode(), *sort_key(each)))
    ]  # fmt: skip
    if json.loads(text) != expected:
        sys.exit("the export differs")


def check_figures(program, database, size):
    """Compares the figures of a plant; returns the page of all its units and their figures."""
    attempts, tests_18 = plant(*size)
    store(program, database, attempts, tests_18)
    check_export(run([program, "export", "--format=json", "--database", database]), attempts)
    report = [program, "report", "--database", database]
    for request in random_requests(attempts, list(tests_18)):
        options = [f"--{key}={each}" for key, each in request.items() if each and key != "exclude"]
        options += [f"--exclude={wild}" for wild in request["exclude"]]
        found = rounded(run([*report, *options, "--format=json"]))
        for row in found["not_passed"]:
            row.pop("failures")  # a text, see test_page
        expected = figures(attempts, tests_18, request, found["request"]["made_at"])
        expected = rounded(json.dumps(expected))
        for key in expected.keys() | found.keys():
            if found.get(key) != expected.get(key):
                sys.exit(f"{size} {request}\n{key}: {found.get(key)}\nnot {expected.get(key)}")
    return run([*report, "--output=-"]), run([*report, "--format=json"])


def main():
    random.seed(int(sys.argv[2]))
    pages = []
    for size in PLANTS:
        with tempfile.TemporaryDirectory() as folder:
            pages.append(check_figures(sys.argv[1], pathlib.Path(folder, "a.sqlite"), size))
    with tempfile.TemporaryDirectory() as folder:
        check_pages(pathlib.Path(folder), pages[:-1])
        check_paper(pathlib.Path(folder), pages[-1][0])


if __name__ == "__main__":
    main()
