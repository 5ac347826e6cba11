# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later

"""A second opinion on the page of the yield, written from the words of docs/quality-guide.md and
docs/log-format.md: makes up the logs of lines, has PROGRAM import them and write pages, and names
each table and picture that is not as it has to be. Chromium looks at the last page;
with ZORVI_AXE, a copy of axe.min.js, axe-core does too.

model.py PROGRAM SEED COUNT"""

import collections
import datetime
import fnmatch
import itertools
import math
import os
import pathlib
import random
import re
import subprocess
import sys
import tempfile
from xml.etree import ElementTree

from scipy import stats

BANDS = [13] * 9 + [2] * 30 + [0] + [13] * 4
TAIL = 0.00135
HIDDEN = "[\t\x01\u202e\ufffe\uffff]"
COLOURS = [0, 1, 2, 5, 10, 100]
SECOND = datetime.timedelta(seconds=1)

AXE = """axe.run().then(found => {
    found.violations.forEach(each => console.log('WRONG: ' + each.id + ' ' + each.nodes[0].html));
    console.log('CHECKED by axe'); });"""

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
    worked = max((i + 1 for i, c in enumerate(tried) if "1" in marks[c]), default=0)
    ended = tried[worked] if worked <= len(tried) - 2 else None
    if ended is not None:
        tried = tried[:worked]
    missed = {c: [b for b, mark in enumerate(marks[c]) if mark == "0"] for c in tried}
    return {c: bands for c, bands in missed.items() if bands}, ended


def units_of(logs, tests_18):
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
            result = "not complete" if missed else "complete"
            result = result if ended is None else "ended early"
            units[first.serial].append(Attempt(*first, missed, ended, result))
    return [sorted(unit, key=order_of) for unit in units.values()]


# What the page counts


def is_asked(day, request):
    return request["since"] <= day.isoformat() <= (request["until"] or "9999-12-31")


def selected(units, request):
    def is_left_out(unit):
        return any(fnmatch.fnmatchcase(unit[0].serial, wild) for wild in request["without"])

    units = [unit for unit in units if is_asked(day_of(unit), request)]
    units = [unit for unit in units if request["station"] in ("", unit[0].station)]
    return [u for u in units if not is_left_out(u)], sum(map(is_left_out, units))


def day_of(unit):
    return unit[0].time.date()


def results(units, which, result="complete"):
    return [unit[which].result for unit in units].count(result)


def limits(part, units):
    of, share_of_all = len(part), results(units, 0) / len(units)
    low = sum(stats.binom.cdf(range(of + 1), of, share_of_all) < TAIL)
    return low, of - sum(stats.binom.sf(range(-1, of), of, share_of_all) < TAIL)


def periods(units):
    """Of days, weeks or months the place on the axis, the names and the units."""
    if not units:
        return []
    units = sorted(units, key=day_of)
    begin, end = day_of(units[0]), day_of(units[-1])
    monday = begin - datetime.timedelta(days=begin.weekday())

    def period(unit):
        day = day_of(unit)
        if (end - begin).days < 70:
            return (day - begin).days, date(day, "%A, "), f"{day.day} {day:%b}"
        if (end - begin).days < 490:
            week = (day - monday).days // 7
            day = monday + datetime.timedelta(days=7 * week)
            return week, date(day, "Week of "), f"{day.day} {day:%b}"
        months = (day.year - begin.year) * 12 + day.month - begin.month
        return months, f"{day:%B %Y}", f"{day:%b %y}"

    return [(*key, list(part)) for key, part in itertools.groupby(units, period)]


def by_station(units):
    names = sorted({unit[0].station for unit in units})
    letters = 120 // max(1, len(names))
    short = [n if len(n) <= letters else "\u2026" + n[1 - letters :] for n in names]
    parts = [[unit for unit in units if unit[0].station == n] for n in names]
    return list(zip(range(0, 2 * len(names), 2), names, short, parts))


def false_failures(units):
    failed = passed = 0
    for unit in units:
        whole = [attempt for attempt in unit if attempt.result != "ended early"]
        for attempt, following in zip(whole, whole[1:] + [None]):
            if attempt.result == "not complete":
                failed += 1
                if following and following.station == attempt.station:
                    soon = following.time - attempt.time <= 3600 * SECOND
                    passed += soon and following.result == "complete"
    return passed, failed


def controls(units, tests_18):
    """For each component the units that tried it, and the bands that each of the others missed."""
    firsts = [unit[0] for unit in units]
    for c in range(44):
        here = [a for a in firsts if c in tested(tests_18[a.station])]
        tried = [a for a in here if a.ended is None or c < a.ended]
        yield c, len(tried), [a.missed[c] for a in tried if c in a.missed]


# What the page says


def units_text(number):
    return f"{number:,}" + (" unit" if number == 1 else " units")


def percent(part, whole):
    if whole == 0 or part in (0, whole):
        return f"{100 * part // whole} %" if whole else "–"
    return f"{min(max(math.floor(1000 * part / whole + 0.5) / 10, 0.1), 99.9)} %"


def share(part, whole):
    return f"{percent(part, whole)} ({part:,} of {whole:,})"


def name(c):
    return f"Fader {c}" if c < 9 else f"Button {c - 9}" if c < 40 else f"Rotary {c - 40}"


def title(c):
    return f"{name(c)} (component {c})"


def band_name(c, band):
    ends = f"{10 * band} to {10 * band + 9 if band < 12 else 127}"
    return ends if BANDS[c] == 13 else ["released", "pressed"][band]


def date(day, weekday="%a "):
    return f"{day:{weekday}}{day.day} {day:%b %Y}"


def missed_by(c, tried, missed):
    if tried:
        return share(len(missed), tried)
    return "never tested" if c == 39 else "not tested here"


def most_missed(units):
    counts = [sum(c in unit[0].missed for unit in units) for c in range(44)]
    most = max(counts)
    return f"{name(counts.index(most))}, {units_text(most)}" if most else "–"


def yields(part, units):
    """The cells that days and stations share."""
    if not part:
        return ["–"] * 4
    (low, high), passed, of = limits(part, units), results(part, 0), len(part)
    place = "▼ below" if passed < low else "▲ above" if passed > high else "within"
    within = f"{place} {percent(low, of)} to {percent(high, of)}"
    ended = results(part, 0, "ended early")
    return [share(passed, of), within, share(results(part, -1), of), str(ended)]


def by_number(units):
    for number in range(1, min(10, max(map(len, units))) + 1):
        last = None if number == 10 else number
        ends = [attempt.result for unit in units for attempt in unit[number - 1 : last]]
        passed, ended = ends.count("complete"), ends.count("ended early")
        words = f"{number} and later" if number == 10 else str(number)
        yield [words, f"{len(ends):,}", share(passed, len(ends)), str(ended)]


def unit_cells(unit):
    cells = [re.sub(HIDDEN, "\ufffd", unit[0].serial) or "(no serial number)", str(len(unit))]
    for attempt in unit[0], unit[-1]:
        cells += [f"{attempt.time:%Y-%m-%d %H:%M}", attempt.station, attempt.result]
    return cells


def newest_first(unit):
    return datetime.datetime(9999, 1, 1) - unit[-1].time, unit[-1].serial


def recent_days(units, request, today):
    for ago, word in enumerate(["Today so far, ", "Yesterday, "] + [""] * 6):
        day = today - datetime.timedelta(days=ago)
        part = [unit for unit in units if day_of(unit) == day]
        if is_asked(day, request):
            yield [word + date(day), str(len(part))] + yields(part, units)


def tables_of(units, parts, missed):
    of, false = len(units), false_failures(units)
    ends = [unit[0].ended for unit in units if unit[0].ended is not None]
    worst = sorted((c for c in missed if c[2]), key=lambda c: -len(c[2]))
    sums = list(itertools.accumulate(len(row[2]) for row in worst))
    repeated = [unit for unit in units if len(unit) > 1]
    repeated.sort(key=lambda unit: (-len(unit), newest_first(unit)))
    still_open = [unit_cells(u) for u in sorted(units, key=newest_first) if results([u], -1) == 0]

    def tile(words, part, what):
        return [words, percent(part, of), f"{part:,} of {of:,} {what}"]

    return {
        "tiles": [
            ["Units", f"{of:,}", "serial numbers"],
            ["Attempts", f"{sum(map(len, units)):,}", "at these units"],
            tile("First-pass yield", results(units, 0), "units"),
            tile("Final yield so far", results(units, -1), "units"),
            tile("Ended early", len(ends), "first attempts"),
            ["False failures", percent(*false), "%d of %d failures" % false],
        ],
        "Units not complete": [[c[0], c[5], c[6], c[1]] for c in still_open],
        "Yield by time": [[n, str(len(p))] + yields(p, units) for _, n, _, p in parts],
        "Yield by station": [
            [n, f"{len(p):,}", f"{sum(map(len, p)):,}"] + yields(p, units) + [most_missed(p)]
            for _, n, _, p in by_station(units)
        ],
        "All controls": [[title(row[0]), missed_by(*row)] for row in missed],
        "What was missed": [
            [title(row[0]), missed_by(*row), percent(len(row[2]), sums[-1]), percent(up, sums[-1])]
            for row, up in zip(worst, sums)
        ],
        "Missed bands": [
            [title(c), band_name(c, band), str(sum(band in bands for bands in each))]
            for c, _, each in worst[:3]
            for band in range(BANDS[c])
        ],
        "Where first attempts ended early": [
            [title(c), share(ends.count(c), len(ends))] for c in sorted(set(ends))
        ],
        "Attempts by number": list(by_number(units)),
        "Units tested more than once": [unit_cells(unit) for unit in repeated],
    }


# What is on a page


def texts(elements):
    return ["".join(element.itertext()).replace("\xa0", " ") for element in elements]


def rows_of(page, label):
    rows = f".//div[@aria-label='{label}']/table/tbody/tr"
    found = page.iterfind(".//*[@class='tile']" if label == "tiles" else rows)
    return [texts(row) for row in found]


def shapes(picture, *kinds):
    return [shape for shape in picture.iter() if shape.get("class") in kinds]


def points(line):
    return [tuple(map(float, pair.split(","))) for pair in line.get("points").split()]


def centre_of(mark):
    if mark.get("class") == "dot":
        return float(mark.get("cx")), float(mark.get("cy"))
    x, tip = points(mark)[0]
    return x, tip + (8 if mark.get("class") == "above" else -8)


def percent_scale(picture):
    """What y stands for, and the lowest percentage."""
    labels = [text for text in shapes(picture, "label end") if text.text.endswith(" %")]
    axis = [(int(text.text[:-2]), float(text.get("y")) - 4) for text in labels]
    (high, top), (low, bottom) = axis[0], axis[-1]
    return lambda y: low + (bottom - y) / (bottom - top) * (high - low), low


def seen_periods(picture):
    """Of each period its mark, whether a line leads to it, its yield, limits, bar and place."""
    at, _ = percent_scale(picture)
    heights = [float(bar.get("height")) for bar in shapes(picture, "bar")]
    fields = shapes(picture, "within")
    ends = [points(line)[1] for line in shapes(picture, "trend")]
    marks = shapes(picture, "dot", "below", "above")
    for mark, bar, field in zip(marks, heights, fields):
        x, y = centre_of(mark)
        top, width, height = (float(field.get(key)) for key in ("y", "width", "height"))
        place = (x - width / 2 - float(fields[0].get("x"))) / width
        row = [at(y), at(top), at(top + height), bar / max(heights), place]
        yield [mark.get("class"), (x, y) in ends] + row
    yield at(points(shapes(picture, "centre")[0])[0][1])


def expected_periods(parts, units, lowest):
    most, before = max(len(part) for *_, part in parts), None
    for place, _, _, part in parts:
        passed, of = results(part, 0), len(part)
        low, high = limits(part, units)
        kind = "below" if passed < low else "above" if passed > high else "dot"
        on_axis = [max(100 * count / of, lowest) for count in (high, low)]
        row = [100 * passed / of, *on_axis, of / most, place - parts[0][0]]
        yield [kind, before == place - 1] + row
        before = place
    yield max(100 * results(units, 0) / len(units), lowest)


def pictures(page, units, parts, missed):
    """What is seen, and what has to be."""
    labels = {picture.get("aria-label"): picture for picture in page.iter("svg")}
    picture_of = {re.sub(" (day|week|month)$", " time", label): labels[label] for label in labels}
    for unit, some in ("station", by_station(units)), ("time", parts):
        picture = picture_of.get("First-pass yield and units by " + unit)
        if some:
            lowest = percent_scale(picture)[1]
            yield list(seen_periods(picture)), list(expected_periods(some, units, lowest))
            seen = texts(shapes(picture, "label middle"))
            expected = [short for _, _, short, _ in some]
            cells = [yields(part, units) for *_, part in some]
            outside = [cell[0].split(" (")[0] for cell in cells if cell[1][0] in "▼▲"]
            yield texts(shapes(picture, "value middle")), outside
            yield seen, [s for s in expected if unit == "station" or s in seen or s == expected[0]]
    worst = sorted((c for c in missed if c[2]), key=lambda c: -len(c[2]))
    counts = [len(row[2]) for row in worst]
    if worst:
        picture = picture_of["Units that missed each control, most missed first"]
        at = percent_scale(picture)[0]
        seen = [at(float(bar.get("y"))) for bar in shapes(picture, "bar")]
        seen += [at(y) for _, y in points(shapes(picture, "trend")[0])]
        expected = counts[:14] + list(itertools.accumulate(counts[:14]))
        yield seen, [100 * count / sum(counts) for count in expected]
        yield texts(shapes(picture, "label middle")), [name(row[0]) for row in worst[:14]]
    for c, _, each in worst[:3]:
        picture = picture_of[f"Missed bands of {name(c)}"]
        heights = [float(bar.get("height")) for bar in shapes(picture, "bar")]
        bands = [sum(band in bands for bands in each) for band in range(BANDS[c])]
        words = [band_name(c, band).split()[0] for band in range(BANDS[c])]
        yield texts(shapes(picture, "label middle")), words
        yield [h / max(heights) for h in heights], [count / max(bands) for count in bands]
    surface = next(labels[label] for label in labels if "surface" in label)
    classes = [shape.get("class") or shape.find("rect").get("class") for shape in surface]
    words = map(str.strip, texts(surface))
    yield list(zip(classes, words)), list(expected_surface(missed))


def expected_surface(missed):
    """Classes and texts: the legend, and of each control what hovers, its number and its share."""
    yield "ground", ""
    for step, most in enumerate(COLOURS):
        yield f"control miss{step}", ""
        yield "label", f"up to {most} %" if most else "none"
    for c, tried, each in missed[:39] + missed[40:]:
        step = sum(100 * len(each) > most * tried for most in COLOURS)
        colour = f"miss{step}" if tried else "untested"
        yield "control " + colour, f"{title(c)}: {missed_by(c, tried, each)}"
        yield f"number on-{colour} middle", str(c)
        yield f"rate on-{colour} middle", percent(len(each), tried) if tried else ""


def is_close(seen, expected):
    if isinstance(seen, list):
        return len(seen) == len(expected) and all(map(is_close, seen, expected))
    return abs(seen - expected) < 0.1 if isinstance(seen, float) else seen == expected


def wrongs(page, logs, tests_18, request):
    text = " ".join(" ".join(texts(page.iter("p"))).split())
    today = datetime.date.fromisoformat(re.search("Made on (.{10})", text)[1])
    units, left_out = selected(units_of(logs, tests_18), request)
    on_axis = [u for u in units if day_of(u).year >= 2000 and (day_of(u) - today).days <= 1]
    parts, missed = periods(on_axis), list(controls(units, tests_18))
    tables = {"The last days": list(recent_days(units, request, today))}
    tables.update(tables_of(units, parts, missed) if units else {"tiles": []})
    for label, rows in tables.items():
        seen = rows_of(page, label)
        if label == "Units not complete":  # without what the last attempt missed
            seen = [row[:4] for row in seen]
        if seen != rows:
            yield label, seen, rows
    for cell in page.iter("td"):
        is_bad = re.match("nothing since|no log|▼|(not complete|ended early)$", cell.text or "")
        if bool(is_bad) != (cell.get("class") == "bad"):
            yield cell.text, cell.get("class")
    more = sum(bool(row[2]) for row in missed) - 14
    off_axis = len(units) - len(on_axis)
    since, until, station, wilds = request.values()
    time = (since and f" from {since}") + (until and f" to {until}") or " at any time"
    where = f'at station "{station}"' if station else "at all stations"
    without = wilds and f", without {', '.join(wilds)}: {units_text(left_out)} left out"
    for phrase, is_said in [
        (f"first tested{time}, {where}{without or ''}. Made on", True),
        ("no such units", not units),
        (f"{units_text(off_axis)} with a first attempt before", off_axis),
        (f"{more} more controls are in the table", more > 0),
        ("The last attempt at every unit is complete", 0 < results(units, -1) == len(units)),
        ("No unit was tested twice", units and all(len(unit) == 1 for unit in units)),
    ]:
        if (phrase in text) != bool(is_said):
            yield phrase, text
    for seen, expected in pictures(page, units, parts, missed) if units else []:
        if not is_close(seen, expected):
            yield seen, expected


# Plants


def run(tests_18, end, misses):
    """The marks of a run up to a component; misses: how often a control misses bands."""
    marks = ["0" * count for count in BANDS]
    for c in tested(tests_18):
        if c < end:
            marks[c] = "1" * BANDS[c]
            if random.random() < misses:
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
    for _ in range(random.choice([1] * 12 + [2, 2, 2, 3, 4, 13])):
        end = random.choice([44] * 12 + [43, 42, 41, 40, 38, 19, 18, 5, 0])
        marks = run(stations[station], end, 0.05 if "<" in station else 0.01)
        for _ in range(random.choice([1, 1, 1, 2])):  # the same once more
            for time, part in saves(marks, time):
                yield Log(station, serial, time, part)
            time += random.choice([0, 30, 60, 61, 900, 1800, 1801, 3600, 3601, 90000]) * SECOND
        if random.random() < 0.4:
            station = random.choice(list(stations))


def plant():
    """Logs, whether each station tests component 18, and requests."""
    names = ["Station 1", "Assembly line 2 of hall 7, station 2", "line <\u00e4>", "\u4e00"]
    names = names[: random.choice([1, 3, 4])]
    tests_18 = {name: random.random() < 0.4 for name in names}
    serials = ["", " ", "KG-/4", "\u00e4\u00df", "'\"", "\U0001f600", "KG-1", "KG-22", "kg-1"]
    serials += ["</td><script>console.log('WRONG')</script>&amp;", "\t\x01\u202e\ufffe\uffff"]
    serials += ["0908-%04d" % number for number in range(random.choice([0, 20, 150]))]
    long = random.choice([3, 12, 40, 80])
    days = [datetime.date.today() + datetime.timedelta(days=ahead) for ahead in range(-long, 3)]
    days += [datetime.date(1999, 12, 31), datetime.date(2000, 1, 1)]
    patterns = [[], ["KG-*"], ["?", "0908-00[1-3]*"], ["*"], ["<*", "[!0]*", "KG-?4"]]
    logs = [log for s in serials for log in unit_logs(s, tests_18, random.choice(days))]
    random.shuffle(logs)
    requests = [{"since": "", "until": "", "station": "", "without": []}]
    for _ in range(3):
        first, last = [day.isoformat() for day in sorted(random.sample(days, 2))]
        request = {"since": random.choice(["", first]), "until": random.choice(["", last])}
        request["station"] = random.choice(["", random.choice(logs).station])
        request["without"] = random.choice(patterns)
        requests.append(request)
    return logs, tests_18, requests


def log_bytes(log):
    elements = ["Norvane Instruments"]
    elements.append(f"ZORVI\t#{log.serial}\t{log.time:%a %b} {log.time.day} {log.time:%H:%M:%S %Y}")
    for c, marks in enumerate(log.marks):
        control = name(c).upper().replace(" ", ": ")
        ranges = [f"Range {band}: {mark}" for band, mark in enumerate(marks)]
        head = f"---------------- {control} (Component {c}) ----------------"
        elements.append("\r\n".join([head, *(ranges or [" NOT TESTED (Power Button)"])]))
    return ("\n\r\n\r\n".join(elements) + "\n").encode()


# The page in Chromium


def browse(page, *options):
    """What Chromium says on its console, and makes of the page."""
    quiet = ["--no-first-run", "--disable-background-networking", "--disable-component-update"]
    with tempfile.TemporaryDirectory() as profile:
        command = ["chromium", "--headless", "--no-sandbox", "--disable-gpu", "--disable-sync"]
        command += [*quiet, f"--user-data-dir={profile}", *options, page.as_uri()]
        done = subprocess.run(command, capture_output=True, text=True, timeout=100)
    return done.stdout + done.stderr


def wrong_in_browser(page):
    """Dark and light, a phone's width and a wide one; and on paper with long lists."""
    text = page.read_text()
    script = pathlib.Path(__file__).with_name("pagecheck.js").read_text()
    if "ZORVI_AXE" in os.environ:
        script += pathlib.Path(os.environ["ZORVI_AXE"]).read_text() + AXE
    looks = 2 * script.count("'CHECKED")
    page.write_text(text + f"<script>{script}</script>")
    frames = page.with_name("frames.html")
    frame = "<iframe src='page.html' width='{}' height='800'></iframe>"
    frames.write_text(frame.format(400) + frame.format(1600))
    options = ["--enable-logging=stderr", "--virtual-time-budget=20000", "--dump-dom"]
    for scheme in "01":
        said = browse(frames, *options, f"--blink-settings=preferredColorScheme={scheme}")
        if re.search("WRONG|Uncaught", said) or said.count("CHECKED") != looks:
            yield re.findall(".*(?:WRONG|Uncaught|CHECKED).*", said)
    row = re.search('(?s)id="open".*?<tbody>(.*?</tr>)', text)[1]
    page.write_text(text.replace(row, row * 5000))
    pdf = page.with_suffix(".pdf")
    browse(page, f"--print-to-pdf={pdf}")
    pages = pdf.read_bytes().count(b"/Type /Page\n")
    if not 9 < pages < 14:  # with closed details they are 8
        yield pages, "sheets of paper"


def wrongs_of_plant(program, folder, is_last):
    logs, tests_18, requests = plant()
    database = ["--database", folder / "a.sqlite"]
    for number, station in enumerate(tests_18):
        path = folder / str(number)
        path.mkdir()
        for i, log in enumerate(logs):
            if log.station == station:
                (path / f"{i}.txt").write_bytes(log_bytes(log))
        options = ["--station", station] + ["--tests-18"] * tests_18[station]
        subprocess.run([program, "import", *database, *options, path], check=True)
    for request in requests:
        options = [f"--{key}={each}" for key, each in request.items() if each and key != "without"]
        options += [f"--without={wild}" for wild in request["without"]]
        page = folder / "page.html"
        subprocess.run([program, "report", *database, *options, "--output", page], check=True)
        for wrong in wrongs(ElementTree.parse(page), logs, tests_18, request):
            yield request, *wrong
        if is_last and request == requests[0]:
            yield from wrong_in_browser(page)


def main():
    random.seed(int(sys.argv[2]))
    plants = int(sys.argv[3])
    for number in range(1, plants + 1):
        with tempfile.TemporaryDirectory() as folder:
            for wrong in wrongs_of_plant(sys.argv[1], pathlib.Path(folder), number == plants):
                sys.exit("\n  ".join(map(str, wrong)))


if __name__ == "__main__":
    main()
