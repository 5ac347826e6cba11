# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later

"""A second opinion on the figures of a report, written from the words of docs/quality-guide.md and
docs/log-format.md: simulates the logs of random plants, has PROGRAM import them and report, and
prints the figures of the JSON that differ. Chromium checks the page of each plant (pagecheck.js);
with ZORVI_AXE, a copy of axe.min.js, axe-core does too.

model.py PROGRAM SEED COUNT"""

import collections
import datetime
import fnmatch
import itertools
import json
import os
import pathlib
import random
import re
import statistics
import subprocess
import sys
import tempfile

from scipy import stats

BANDS = [13] * 9 + [2] * 30 + [0] + [13] * 4
TAIL = 0.00135
SECOND = datetime.timedelta(seconds=1)
HOUR = 3600 * SECOND

# marks: for each of the 44 components a text with 0 or 1 for each band. started: the start of a run;
# None for a log that does not name its run.
Log = collections.namedtuple("Log", "station serial time marks started")
Attempt = collections.namedtuple("Attempt", "log missed aborted result")


# What logs mean


def tested(tests_18):
    return [c for c in range(44) if c != 39 and (tests_18 or c != 18)]


def attempt_of(log, tests_18):
    order = tested(tests_18)
    reached = max((i + 1 for i, c in enumerate(order) if "1" in log.marks[c]), default=0)
    aborted = order[reached] if reached <= len(order) - 2 else None
    if aborted is not None:
        order = order[:reached]
    missed = {c: [b for b, mark in enumerate(log.marks[c]) if mark == "0"] for c in order}
    missed = {c: bands for c, bands in missed.items() if bands}
    result = "failed" if missed else "passed"
    return Attempt(log, missed, aborted, result if aborted is None else "aborted")


def units_of(logs, tests_18):
    """All attempts, those of a unit in their order."""
    units = collections.defaultdict(list)
    for log in filter(has_mark, logs):
        units[log.serial].append(attempt_of(log, tests_18[log.station]))
    return [sorted(unit, key=lambda attempt: attempt.log.time) for unit in units.values()]


def has_mark(log):
    return "1" in "".join(log.marks)


# What a report counts


def day_of(unit):
    return unit[0].log.time.date()


def is_requested(day, request):
    return request["since"] <= day.isoformat() <= (request["until"] or "9999-12-31")


def select(units, request):
    """The units of a report, and the number of excluded ones."""
    units = [unit for unit in units if is_requested(day_of(unit), request)]
    units = [unit for unit in units if request["station"] in ("", unit[0].log.station)]

    def is_excluded(unit):
        return any(fnmatch.fnmatchcase(unit[0].log.serial, wild) for wild in request["exclude"])

    return [unit for unit in units if not is_excluded(unit)], sum(map(is_excluded, units))


def results(units, which, result="passed"):
    return [unit[which].result for unit in units].count(result)


def ratio(part, whole):
    return part / whole if whole else None


def share(part, whole):
    return {"count": part, "of": whole, "share": ratio(part, whole)}


def limits(part, units):
    of, share_of_all, passed = len(part), results(units, 0) / len(units), results(part, 0)
    low = sum(stats.binom.cdf(range(of + 1), of, share_of_all) < TAIL)
    high = of - sum(stats.binom.sf(range(-1, of), of, share_of_all) < TAIL)
    position = "below LCL" if passed < low else "above UCL" if passed > high else "within"
    return {"lcl": low / of, "ucl": high / of, "position": position}


def yields(part, units):
    """The columns that days, periods and stations share."""
    passed, last = results(part, 0), results(part, -1)
    row = {
        "first_pass_yield": share(passed, len(part)),
        "control_limits": limits(part, units) if part else None,
        "final_yield": share(last, len(part)),
        "aborted": results(part, 0, "aborted"),
    }
    return row


def periods(units):
    """The name of the periods, and of each the first day and the units."""
    days = sorted(map(day_of, units))
    span = (days[-1] - days[0]).days if days else None
    name = None if span is None else "day" if span < 70 else "week" if span < 490 else "month"

    def begin(unit):
        day = day_of(unit)
        weekday = datetime.timedelta(days=day.weekday())
        return {"day": day, "week": day - weekday, "month": day.replace(day=1)}[name]

    parts = itertools.groupby(sorted(units, key=day_of), begin)
    return name, [(first, list(part)) for first, part in parts]


def false_failures(units):
    failed = passed = 0
    for unit in units:
        ended = [attempt for attempt in unit if attempt.result != "aborted"]
        for attempt, following in zip(ended, ended[1:] + [None]):
            if attempt.result == "failed":
                failed += 1
                if following and following.log.station == attempt.log.station:
                    soon = following.log.time - attempt.log.time <= HOUR
                    passed += soon and following.result == "passed"
    return share(passed, failed)


def test_time(attempts):
    times = [a.log.time - a.log.started for a in attempts if a.result == "passed" and a.log.started]
    times = [t.total_seconds() for t in times if 0 * HOUR <= t <= 24 * HOUR]
    return {"seconds": statistics.median(times), "attempts": len(times)} if times else None


def control_failures(units, tests_18):
    """For each component how many units reached it, and the bands that each other one missed."""
    firsts = [unit[0] for unit in units]
    for c in range(44):
        here = [a for a in firsts if c in tested(tests_18[a.log.station])]
        reached = [a for a in here if a.aborted is None or c < a.aborted]
        yield c, len(reached), [a.missed[c] for a in reached if c in a.missed]


def top_failure(units):
    counts = [sum(c in unit[0].missed for unit in units) for c in range(44)]
    top = counts.index(max(counts))
    return {"component": top, "failed_units": counts[top]} if counts[top] else None


def station_rows(units):
    all_attempts = [attempt for unit in units for attempt in unit]
    for name in sorted({unit[0].log.station for unit in units}, key=str.encode):
        part = [unit for unit in units if unit[0].log.station == name]
        row = {"station": name, "units": len(part), "attempts": sum(map(len, part))}
        row["median_test_time"] = test_time(a for a in all_attempts if a.log.station == name)
        yield {**row, "top_failure": top_failure(part), **yields(part, units)}


def number_rows(units):
    for number in range(1, min(10, max(map(len, units), default=0)) + 1):
        last = None if number == 10 else number
        ends = [attempt.result for unit in units for attempt in unit[number - 1 : last]]
        row = {"number": number, "attempts": len(ends)}
        yield {**row, "passed": share(ends.count("passed"), len(ends)),
               "aborted": ends.count("aborted")}  # fmt: skip


def newest_first(unit):
    return datetime.datetime(9999, 1, 1) - unit[-1].log.time, unit[-1].log.serial


def unit_row(unit):
    row = {"serial": unit[0].log.serial, "attempts": len(unit)}
    for prefix, attempt in ("first_", unit[0]), ("last_", unit[-1]):
        row |= {prefix + key: value for key, value in attempt_row(attempt).items()}
    return row


def attempt_row(attempt):
    log = attempt.log
    return {"tested_at": log.time.isoformat(), "station": log.station, "result": attempt.result}


def not_passed_row(unit):
    row = {"serial": unit[0].log.serial, "attempts": len(unit), **attempt_row(unit[-1])}
    row.pop("result")
    return row


def control_rows(units, tests_18):
    failures = list(control_failures(units, tests_18))
    ends = [unit[0].aborted for unit in units if unit[0].aborted is not None]
    failed = sorted((row for row in failures if row[2]), key=lambda row: -len(row[2]))
    sums = list(itertools.accumulate(len(row[2]) for row in failed))

    def row_of(c, reached, missed):
        return {"component": c, "failed_units": share(len(missed), reached)}

    return {
        "controls": [row_of(*row) for row in failures],
        "pareto": [
            {**row_of(*row), "share": len(row[2]) / sums[-1], "cumulative": upto / sums[-1]}
            for row, upto in zip(failed, sums)
        ],
        "missed_bands": [
            {"component": c, "band": b, "failed_units": sum(b in bands for bands in missed)}
            for c, _, missed in failed[:3]
            for b in range(BANDS[c])
        ],
        "aborted": [
            {"component": c, "first_attempts": share(ends.count(c), len(ends))}
            for c in sorted(set(ends))
        ],
    }


def last_log_rows(logs, stations, request, now):
    for name in sorted(stations, key=str.encode):
        times = [log.time for log in logs if log.station == name and has_mark(log)]
        last = max((time for time in times if time <= now), default=None)
        row = {"station": name, "tested_at": last and last.isoformat()}
        if request["station"] in ("", name):
            yield {**row, "age_seconds": last and (now - last).total_seconds()}


def figures(logs, tests_18, request, made_at):
    units, excluded = select(units_of(logs, tests_18), request)
    now, of = datetime.datetime.fromisoformat(made_at), len(units)
    plausible = [u for u in units if day_of(u).year >= 2000 and (day_of(u) - now.date()).days <= 1]
    name, parts = periods(plausible)
    recent = [now.date() - datetime.timedelta(days=ago) for ago in range(8)]
    recent = [(d, [u for u in units if day_of(u) == d]) for d in recent if is_requested(d, request)]

    def rows_of(parts):
        return [
            {"first_tested": first.isoformat(), "units": len(part), **yields(part, units)}
            for first, part in parts
        ]

    retested = [unit for unit in units if len(unit) > 1]
    retested.sort(key=lambda unit: (-len(unit), newest_first(unit)))
    open_units = sorted((u for u in units if results([u], -1) == 0), key=newest_first)
    settings = {key: value or None for key, value in request.items() if key != "exclude"}
    return {
        "request": {**settings, "exclude": request["exclude"], "excluded_units": excluded,
                    "made_at": made_at},  # fmt: skip
        "last_logs": list(last_log_rows(logs, tests_18, request, now)),
        "recent_days": rows_of(recent),
        "totals": {
            "units": of,
            "attempts": sum(map(len, units)),
            "first_pass_yield": share(results(units, 0), of),
            "final_yield": share(results(units, -1), of),
            "aborted": share(results(units, 0, "aborted"), of),
            "false_failures": false_failures(units),
            "median_test_time": test_time(attempt for unit in units for attempt in unit),
        },
        "implausible_dates": of - len(plausible),
        "period": name,
        "trend": rows_of(parts),
        "stations": list(station_rows(units)),
        **control_rows(units, tests_18),
        "attempts_by_number": list(number_rows(units)),
        "not_passed": list(map(not_passed_row, open_units)),
        "retested": list(map(unit_row, retested)),
        "retested_units": len(retested),
    }


# Plants


def run_log(station, serial, tests_18, time):
    """Units pass at the last station only, and a tenth of the days is bad."""
    end = random.choice([44] * 12 + [43, 42, 41, 40, 38, 19, 18, 5, 1, 0])
    failures = 0.2 if (datetime.date.today() - time.date()).days % 10 == 3 else 0.01
    end, failures = (44, 0) if station == "\u4e00" else (end, failures)
    marks = ["0" * count for count in BANDS]
    for c in tested(tests_18):
        if c < end:
            bad = random.random() < failures
            marks[c] = "".join(random.choice("01" if bad else "1") for _ in marks[c])
    duration = random.choice([1, 60, 61, 150, 150, 3600, 86400, 86401, -1])
    started = time - duration * SECOND + random.choice([0, 0, 1, 500]) * SECOND / 1000
    return Log(station, serial, time, tuple(marks), random.choice([None] + [started] * 4))


def unit_logs(serial, stations, day):
    time = datetime.datetime.combine(day, datetime.time(6)) + random.randrange(36000) * SECOND
    station = random.choice(list(stations))
    for _ in range(random.choice([1] * 12 + [2, 2, 2, 3, 4, 13])):
        yield run_log(station, serial, stations[station], time)
        time += random.choice([1, 30, 60, 900, 3600, 3601, 90000]) * SECOND
        if random.random() < 0.4:
            station = random.choice(list(stations))


def random_requests(days, logs):
    """All units, those of one day, of a station, and others."""
    fields = ["since", "until", "station", "exclude"]
    day = logs[0].time.date().isoformat()
    first, last = [day.isoformat() for day in sorted(random.sample(days, 2))]
    exclude = random.choice([["KG-*"], ["?", "0908-00[1-3]*"], ["*"], ["<*", "[!0]*", "KG-?4"]])
    yield dict(zip(fields, ["", "", "", []]))
    yield dict(zip(fields, [day, day, "", []]))
    yield dict(zip(fields, [first, "", random.choice(logs).station, []]))
    yield dict(zip(fields, ["", last, "", exclude]))


def plant():
    """Logs, whether each station tests component 18, and requests."""
    names = ["Station 1", "Assembly line 2 of hall 7, station 2", "line <\u00e4>", "\u4e00"]
    names = names[: random.choice([1, 3, 4])]
    tests_18 = {name: random.random() < 0.4 for name in names}
    serials = ["", " ", "KG-/4", "\u00e4\u00df", "'\"", "\U0001f600", "KG-1", "KG-22", "kg-1"]
    serials += ["</td><script>console.log('WRONG')</script>&amp;", "\t\x01\u202e\ufffe\uffff"]
    serials += ["0908-%04d" % number for number in range(random.choice([0, 20, 150, 300]))]
    long = random.choice([3, 12, 60, 80, 600])
    days = [datetime.date.today() + datetime.timedelta(days=ahead) for ahead in range(-long, 3)]
    days += [datetime.date(1999, 12, 31), datetime.date(2000, 1, 1)][: random.choice([0, 1, 1, 1, 2])]
    logs = [log for s in serials for log in unit_logs(s, tests_18, random.choice(days))]
    random.shuffle(logs)
    return logs, tests_18, list(random_requests(days, logs))


def log_bytes(log):
    elements = ["Norvane Instruments"]
    elements.append(f"ZORVI\t#{log.serial}\t{log.time:%a %b} {log.time.day} {log.time:%H:%M:%S %Y}")
    for c, marks in enumerate(log.marks):
        name = f"FADER: {c}" if c < 9 else f"BUTTON: {c - 9}" if c < 40 else f"ROTARY: {c - 40}"
        ranges = [f"Range {band}: {mark}" for band, mark in enumerate(marks)]
        head = f"---------------- {name} (Component {c}) ----------------"
        elements.append("\r\n".join([head, *(ranges or [" NOT TESTED (Power Button)"])]))
    return ("\n\r\n\r\n".join(elements) + "\n").encode()


def file_name(log, number, has_18):
    if log.started is None:
        return f"{number}.txt"
    ms = log.started.microsecond // 1000
    return f"{log.started:%Y%m%dT%H%M%S}.{ms:03}-{number:016x}-1{'-TARVEK' * has_18}.txt"


def import_logs(program, folder, logs, tests_18):
    for station, has_18 in tests_18.items():
        path = pathlib.Path(tempfile.mkdtemp(dir=folder))
        for number, log in enumerate(logs):
            if log.station == station:
                (path / file_name(log, number, has_18)).write_bytes(log_bytes(log))
        options = ["--station", station] + ["--tests-component-18"] * has_18
        run([program, "import", "--database", folder / "a.sqlite", *options, path])


# The page in Chromium


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
    """Each page with its figures, light and dark, as narrow as a phone and wide."""
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
        frames += "".join(f"<iframe src='{file.name}' width={w} height=800></iframe>" for w in (400, 1600))
    (folder / "frames.html").write_text(frames)
    options = ["--enable-logging=stderr", "--virtual-time-budget=20000", "--dump-dom"]
    for scheme in "01":
        dark = f"--blink-settings=preferredColorScheme={scheme}"
        printed = browse(folder / "frames.html", *options, dark)
        if re.search("WRONG|Uncaught", printed):
            sys.exit("\n".join(re.findall(".*(?:WRONG|Uncaught).*", printed)))
        if printed.count("CHECKED") != 2 * len(pages) * script.count("'CHECKED"):
            sys.exit(f"{printed.count('CHECKED')} of {2 * len(pages)} pages checked")


def check_paper(folder, page):
    """A long list ends, and closed tables are open."""
    row = re.search('(?s)id="not-passed".*?<tbody>(.*?</tr>)', page)[1]
    (folder / "long.html").write_text(page.replace(row, row * 5000))
    browse(folder / "long.html", f"--print-to-pdf={folder / 'page.pdf'}")
    sheets = (folder / "page.pdf").read_bytes().count(b"/Type /Page\n")
    if not 8 < sheets < 14:  # with closed tables they are 7
        sys.exit(f"{sheets} sheets of paper")


def rounded(text):
    return json.loads(text, parse_float=lambda digits: round(float(digits), 9))


def check_figures(program, folder):
    """Compares the figures of a plant; returns the page of all its units and their figures."""
    logs, tests_18, requests = plant()
    import_logs(program, folder, logs, tests_18)
    for request in requests:
        options = [f"--{key}={each}" for key, each in request.items() if each and key != "exclude"]
        options += [f"--exclude={wild}" for wild in request["exclude"]]
        report = [program, "report", "--database", folder / "a.sqlite", *options]
        found = rounded(run([*report, "--format=json"]))
        for row in found["not_passed"]:
            row.pop("failures")  # a text, see test_page
        expected = figures(logs, tests_18, request, found["request"]["made_at"])
        expected = rounded(json.dumps(expected))
        for key in expected.keys() | found.keys():
            if found.get(key) != expected.get(key):
                sys.exit(f"{request}\n{key}: {found.get(key)}\nnot {expected.get(key)}")
        if request == requests[0]:
            result = run([*report, "--output=-"]), json.dumps(found)
    return result


def main():
    random.seed(int(sys.argv[2]))
    pages = []
    for _ in range(int(sys.argv[3])):
        with tempfile.TemporaryDirectory() as folder:
            pages.append(check_figures(sys.argv[1], pathlib.Path(folder)))
    with tempfile.TemporaryDirectory() as folder:
        check_pages(pathlib.Path(folder), pages)
        check_paper(pathlib.Path(folder), pages[0][0])


if __name__ == "__main__":
    main()
