# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later

"""A second opinion on the page of the yield, written from the words of docs/quality-guide.md and
docs/log-format.md: makes up the logs of a line, and says what the page has to show of them.

model.py SEED COUNT         prints as JSON so many plants with their logs and requests
model.py SEED COUNT FOLDER  names what is wrong with their pages, FOLDER/PLANT-CASE.html"""

import collections
import datetime
import fnmatch
import itertools
import json
import math
import random
import re
import sys
from xml.etree import ElementTree

import numpy
from scipy import stats

BANDS = [13] * 9 + [2] * 30 + [0] + [13] * 4
BUTTON = ["released", "pressed"]
TAIL = 0.00135
YIELDS = "|First-pass yield|Limits|Final yield so far|Ended early"
HEADS = {
    "Newest log of each station": "Station|Newest log|Age",
    "The last days": "First tested|Units" + YIELDS,
    "Units not complete": "Serial number|Last tested|Station|Attempts|What the last attempt missed",
    "Yield by time": "First tested|Units" + YIELDS,
    "Yield by station": "Station|Units|Attempts" + YIELDS + "|Most missed",
    "All controls": "Control|Component|Missed by",
    "What was missed": "Control|Missed by|Of all misses|Added up",
    "Missed bands": "Control|Band|Missed by",
    "Where first attempts ended early": "Ended at|Component|First attempts",
    "Attempts by number": "Attempt|Attempts|Complete|Ended early",
    "Units tested more than once": "Serial number|Attempts|First attempt|First station|"
    "First result|Last attempt|Last station|Last result",
}
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


# What the page says


def count(number):
    return f"{number:,}"


def units_text(number):
    return count(number) + (" unit" if number == 1 else " units")


def percent(part, whole):
    if whole == 0 or part in (0, whole):
        return f"{100 * part // whole} %" if whole else "–"
    return f"{min(max(math.floor(1000 * part / whole + 0.5) / 10, 0.1), 99.9)} %"


def share(part, whole):
    return f"{percent(part, whole)} ({count(part)} of {count(whole)})"


def name(c):
    return f"Fader {c}" if c < 9 else f"Button {c - 9}" if c < 40 else f"Rotary {c - 40}"


def values(c, first, last):
    return f"{first * 10} to {min(last * 10 + 9, 127)}" if BANDS[c] == 13 else BUTTON[first]


def date(day, weekday="%a "):
    return f"{day:{weekday}}{day.day} {day:%b %Y}"


def missed_text(attempt):
    texts = []
    for c, bands in sorted(attempt.missed.items()):
        runs = []
        for band in bands:
            if runs and runs[-1][-1] == band - 1:
                runs[-1].append(band)
            else:
                runs.append([band])
        some = ", ".join(values(c, run[0], run[-1]) for run in runs)
        texts.append(f"{name(c)}: " + ("all" if len(bands) == BANDS[c] else some))
    if len(texts) > 3:
        texts[3:] = [f"and {len(texts) - 3} more"]
    ended = [] if attempt.ended is None else [f"ended early at {name(attempt.ended)}"]
    return "; ".join(ended + texts)


def limits(units, passed, of):
    counts = numpy.arange(units + 1)
    if units == 0 or of == 0:
        return [0, 0]
    low = counts[stats.binom.cdf(counts, units, passed / of) >= TAIL][0]
    high = counts[stats.binom.sf(counts - 1, units, passed / of) >= TAIL][-1]
    return [int(low), int(high)]


def results(units, which):
    return [unit[which].result for unit in units]


def first_pass(units):
    return results(units, 0).count("passed"), len(units)


def yields(units, all_units):
    """The cells that days and stations share."""
    if not units:
        return ["–"] * 4
    passed, of = first_pass(units)
    low, high = limits(of, *first_pass(all_units))
    place = "▼ below" if passed < low else "▲ above" if passed > high else "within"
    return [
        share(passed, of),
        f"{place} {percent(low, of)} to {percent(high, of)}",
        share(results(units, -1).count("passed"), of),
        count(results(units, 0).count("ended")),
    ]


def in_time(day, request):
    return request["since"] <= day.isoformat() <= (request["until"] or "9999-12-31")


def selected(units, request):
    def asked(first):
        return in_time(first.time.date(), request) and request["station"] in ("", first.station)

    def left_out(serial):
        return any(fnmatch.fnmatchcase(serial, pattern) for pattern in request["without"])

    asked_for = [unit for unit in units.values() if asked(unit[0])]
    kept = [unit for unit in asked_for if not left_out(unit[0].serial)]
    return kept, len(asked_for) - len(kept)


def first_day(unit):
    return unit[0].time.date()


def is_on_axis(unit):
    day = first_day(unit)
    return day.year >= 2000 and (day - NOW.date()).days <= 1


def periods(units):
    """The names of days, weeks or months, their units, and their places on the axis."""
    units = sorted(filter(is_on_axis, units), key=first_day)
    if not units:
        return []
    begin, end = first_day(units[0]), first_day(units[-1])
    monday = begin - datetime.timedelta(days=begin.weekday())

    def period(unit):
        day = first_day(unit)
        if (end - begin).days < 70:
            return (day - begin).days, date(day, "%A, ")
        if (end - begin).days < 490:
            week = (day - monday).days // 7
            return week, date(monday + datetime.timedelta(days=7 * week), "Week of ")
        return (day.year - begin.year) * 12 + day.month - begin.month, f"{day:%B %Y}"

    return [(*key, list(part)) for key, part in itertools.groupby(units, period)]


def by_station(units):
    units = sorted(units, key=lambda unit: unit[0].station)
    parts = itertools.groupby(units, lambda unit: unit[0].station)
    return [(2 * i, station, list(part)) for i, (station, part) in enumerate(parts)]


def by_number(units):
    for number in range(1, min(10, max(map(len, units))) + 1):
        last = None if number == 10 else number
        ends = [attempt.result for unit in units for attempt in unit[number - 1 : last]]
        numbered = f"{number} and later" if number == 10 else str(number)
        passed = share(ends.count("passed"), len(ends))
        yield [numbered, count(len(ends)), passed, count(ends.count("ended"))]


def false_failures(units):
    failed = passed = 0
    for unit in units:
        whole = [attempt for attempt in unit if attempt.result != "ended"]
        for attempt, following in zip(whole, whole[1:] + [None]):
            if attempt.result == "failed":
                failed += 1
                if following and following.station == attempt.station:
                    soon = following.time - attempt.time <= 3600 * SECOND
                    passed += soon and following.result == "passed"
    return passed, failed


def misses(units, tests_18):
    """For each component the units that tried it, and the bands that each of the others missed."""
    firsts = [unit[0] for unit in units]
    for c in range(44):
        here = [a for a in firsts if c in tested(tests_18[a.station])]
        tried = [a for a in here if a.ended is None or c < a.ended]
        yield c, len(tried), [a.missed[c] for a in tried if c in a.missed]


def missed_by(c, tried, missed):
    if tried:
        return share(len(missed), tried)
    return "never tested" if c == 39 else "not tested here"


def most_missed(units):
    counts = [sum(c in unit[0].missed for unit in units) for c in range(44)]
    most = max(counts)
    return f"{name(counts.index(most))}, {units_text(most)}" if most else "–"


def newest_logs(logs, tests_18, request):
    for station in sorted(tests_18):
        past = [a for a in logs if a.station == station and a.time <= NOW]
        times = [a.time for a in past if "1" in "".join(a.marks)]
        if request["station"] not in ("", station):
            continue
        if not times:
            yield [station, "no log yet", "–"]
            continue
        newest = max(times)
        hours = (NOW - newest).total_seconds() / 3600
        ages = (int(hours // 24), "days"), (int(hours), "hours"), (int(hours * 60), "min")
        age = ages[0] if hours >= 48 else ages[1] if hours >= 2 else ages[2]
        silent = "nothing since " if hours > 24 else ""
        yield [station, f"{silent}{newest:%a} {newest.day} {newest:%b %H:%M}", "%d %s" % age]


def serial_text(unit):
    return unit[0].serial.replace("\t", "\ufffd") or "(no serial number)"


def attempt_text(attempt):
    result = {"passed": "complete", "failed": "not complete", "ended": "ended early"}
    return [f"{attempt.time:%Y-%m-%d %H:%M}", attempt.station, result[attempt.result]]


def newest_first(unit):
    return datetime.datetime(9999, 1, 1) - unit[-1].time, unit[-1].serial


def worst(missed):
    """The missed controls, most missed first."""
    return sorted((c for c in missed if c[2]), key=lambda c: -len(c[2]))


def missed_tables(units, missed):
    rows = worst(missed)
    sums = list(itertools.accumulate(len(row[2]) for row in rows))
    bands = [
        [name(c), values(c, band, band), count(sum(band in bands for bands in each))]
        for c, _, each in rows[:3]
        for band in range(BANDS[c])
    ]
    ended = [unit[0].ended for unit in units if unit[0].ended is not None]
    return {
        "All controls": [[name(row[0]), str(row[0]), missed_by(*row)] for row in missed],
        "What was missed": [
            [name(row[0]), missed_by(*row), percent(len(row[2]), sums[-1]), percent(up, sums[-1])]
            for row, up in zip(rows, sums)
        ],
        "Missed bands": bands,
        "Where first attempts ended early": [
            [name(c), str(c), share(ended.count(c), len(ended))] for c in sorted(set(ended))
        ],
    }


def tables_of(logs, tests_18, units, request):
    today = [NOW.date() - datetime.timedelta(days=ago) for ago in range(8)]
    days = zip(["Today so far, ", "Yesterday, "] + [""] * 6, today)
    recent = [(f"{word}{date(day)}", day) for word, day in days if in_time(day, request)]
    on_day = {day: [u for u in units if first_day(u) == day] for _, day in recent}
    tables = {
        "Newest log of each station": list(newest_logs(logs, tests_18, request)),
        "The last days": [
            [words, count(len(on_day[day]))] + yields(on_day[day], units) for words, day in recent
        ],
    }
    if not units:
        return tables
    of = len(units)
    passed, ended = first_pass(units)[0], results(units, 0).count("ended")
    final, false = results(units, -1).count("passed"), false_failures(units)
    attempts = sum(map(len, units))
    repeated = [unit for unit in units if len(unit) > 1]
    repeated.sort(key=lambda unit: (-len(unit), newest_first(unit)))
    still_open = [unit for unit in units if unit[-1].result != "passed"]
    return {
        **tables,
        **missed_tables(units, list(misses(units, tests_18))),
        "tiles": [
            ["Units", count(of), "serial numbers"],
            ["Attempts", count(attempts), "at these units"],
            ["First-pass yield", percent(passed, of), f"{count(passed)} of {count(of)} units"],
            ["Final yield so far", percent(final, of), f"{count(final)} of {count(of)} units"],
            ["Ended early", percent(ended, of), f"{count(ended)} of {count(of)} first attempts"],
            ["False failures", percent(*false), "%d of %d failures" % false],
        ],
        "Units not complete": [
            [serial_text(unit), *attempt_text(unit[-1])[:2], count(len(unit))]
            + [missed_text(unit[-1])]
            for unit in sorted(still_open, key=newest_first)
        ],
        "Yield by time": [[n, count(len(p))] + yields(p, units) for _, n, p in periods(units)],
        "Yield by station": [
            [station, count(len(part)), count(sum(map(len, part)))]
            + yields(part, units)
            + [most_missed(part)]
            for _, station, part in by_station(units)
        ],
        "Attempts by number": list(by_number(units)),
        "Units tested more than once": [
            [serial_text(unit), count(len(unit))] + attempt_text(unit[0]) + attempt_text(unit[-1])
            for unit in repeated
        ],
    }


# What a page shows


def texts(elements):
    return ["".join(element.itertext()).replace("\xa0", " ") for element in elements]


def page_tables(page):
    areas = page.iter("div")
    tables = {area.get("aria-label"): area.findall("table/*/tr") for area in areas}
    rows = {label: [texts(row) for row in table] for label, table in tables.items() if table}
    return {**rows, "tiles": [texts(tile) for tile in page.iterfind(".//*[@class='tile']")]}


def shapes(picture, *kinds):
    return [shape for shape in picture.iter() if shape.get("class") in kinds]


def points(line):
    return [tuple(map(float, pair.split(","))) for pair in line.get("points").split()]


def numbers(shape, *attributes):
    return [float(shape.get(attribute)) for attribute in attributes]


def centre_of(mark):
    if mark.tag.endswith("circle"):
        return tuple(numbers(mark, "cx", "cy"))
    tip = points(mark)[0]
    return tip[0], tip[1] + (8 if mark.get("class") == "above" else -8)


def percent_scale(picture):
    """What y stands for, and the lowest percentage."""
    labels = [text for text in shapes(picture, "label end") if text.text.endswith(" %")]
    axis = [(int(text.text[:-2]), float(text.get("y")) - 4) for text in labels]
    (high, top), (low, bottom) = axis[0], axis[-1]
    return lambda y: low + (bottom - y) / (bottom - top) * (high - low), low


def seen_periods(picture):
    """Of each period its mark, its yield, its limits, its units and its place, as they are drawn."""
    at, lowest = percent_scale(picture)
    marks = shapes(picture, "dot", "below", "above")
    bars = [numbers(bar, "height", "x", "width") for bar in shapes(picture, "bar")]
    fields = [numbers(field, "x", "y", "width", "height") for field in shapes(picture, "within")]
    lines = [points(line) for line in shapes(picture, "limit")]
    trends = [[x for x, _ in points(line)] for line in shapes(picture, "trend")]
    seen = []
    for i, (mark, bar, (x, y, width, height)) in enumerate(zip(marks, bars, fields)):
        middle, mark_y = centre_of(mark)
        row = [at(mark_y), at(y), at(y + height), bar[0] / max(bars)[0]]
        row += [(x - fields[0][0]) / width, at(lines[2 * i][0][1]), at(lines[2 * i + 1][1][1])]
        row += [x + width / 2 - middle, bar[1] + bar[2] / 2 - middle]
        seen.append([mark.get("class"), any(trend[1] == middle for trend in trends)] + row)
    return seen, at(points(shapes(picture, "centre")[0])[0][1]), lowest


def expected_periods(parts, units, lowest):
    most = max(len(part) for _, _, part in parts)
    before = None
    for place, _, part in parts:
        passed, of = first_pass(part)
        low, high = limits(of, *first_pass(units))
        kind = "below" if passed < low else "above" if passed > high else "dot"
        low, high = max(100 * low / of, lowest), max(100 * high / of, lowest)
        row = [100 * passed / of, high, low, of / most, place - parts[0][0], high, low, 0, 0]
        yield [kind, before == place - 1] + row
        before = place


def is_close(seen, expected):
    if isinstance(seen, (list, tuple)):
        return len(seen) == len(expected) and all(map(is_close, seen, expected))
    return abs(seen - expected) < 0.1 if isinstance(seen, float) else seen == expected


def wrong_pictures(page, units, missed):
    """Pairs of what is seen and what is expected."""
    pictures = {picture.get("aria-label"): picture for picture in page.iter("svg")}

    def picture_of(begin):
        return next((pictures[label] for label in pictures if label.startswith(begin)), None)

    for unit, parts in ("station", by_station(units)), ("", periods(units)):
        picture = picture_of("First-pass yield and units by " + unit) if parts else None
        if picture is not None:
            seen, centre, lowest = seen_periods(picture)
            passed, of = first_pass(units)
            yield seen, list(expected_periods(parts, units, lowest))
            yield centre, max(100 * passed / of, lowest)
        elif parts:
            yield unit, "a picture"
    rows = worst(missed)
    counts = [len(row[2]) for row in rows]
    if counts:
        picture = picture_of("Units that missed each control")
        at = percent_scale(picture)[0]
        bars = [at(float(bar.get("y"))) for bar in shapes(picture, "bar")]
        yield bars, [100 * count / sum(counts) for count in counts][:14]
        sums = list(itertools.accumulate(counts))[:14]
        line = [at(y) for _, y in points(shapes(picture, "trend")[0])]
        yield line, [100 * up / sums[-1] * sums[-1] / sum(counts) for up in sums]
    for c, _, each in rows[:3]:
        heights = [float(bar.get("height")) for bar in shapes(picture_of(f"Missed bands of {name(c)}"), "bar")]
        bands = [sum(band in missed for missed in each) for band in range(BANDS[c])]
        yield [h / max(heights) for h in heights], [n / max(bands) for n in bands]
    controls = []
    for group in picture_of("The control surface").iter("g"):
        title, rect = group
        controls.append([title.text.replace("\xa0", " "), rect.get("class")])
    expected = []
    for row in missed:
        step = sum(100 * len(row[2]) > limit * row[1] for limit in (0, 1, 2, 5, 10))
        colour = f"miss{step}" if row[1] else "untested"
        expected.append([f"{name(row[0])} (component {row[0]}): {missed_by(*row)}", "control " + colour])
    del expected[39]
    yield controls, expected


def wrongs(page, logs, tests_18, request):
    units, left_out = selected(attempts_of(logs, tests_18), request)
    expected = tables_of(logs, tests_18, units, request)
    for label, head in HEADS.items():
        if label in expected:
            expected[label].insert(0, head.split("|"))
    seen = page_tables(page)
    for label in {**seen, **expected}:
        if seen.get(label, []) != expected.get(label, []):
            yield label, seen.get(label), expected.get(label)
    for cell in page.iter("td"):
        is_bad = re.match("nothing since|no log|▼|(not complete|ended early)$", cell.text or "")
        if bool(is_bad) != (cell.get("class") == "bad"):
            yield cell.text, cell.get("class")
    text = " ".join(" ".join(texts(page.iter("p"))).split())
    off_axis = [unit for unit in units if not is_on_axis(unit)]
    missed = list(misses(units, tests_18))
    more = len(worst(missed)) - 14
    is_complete = all(unit[-1].result == "passed" for unit in units)
    for phrase, is_said in [
        (f": {units_text(left_out)} left out", request["without"]),
        ("no such units", not units),
        (f"{units_text(len(off_axis))} with a first attempt before", off_axis),
        (f"{count(more)} more controls are in the table", more > 0),
        ("The last attempt at every unit is complete", units and is_complete),
        ("No unit was tested twice", units and all(len(unit) == 1 for unit in units)),
    ]:
        if (phrase in text) != bool(is_said):
            yield phrase, text
    if units:
        for seen, expected in wrong_pictures(page, units, missed):
            if not is_close(seen, expected):
                yield seen, expected


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
    return logs, declared, {log.station: tests_18[log.station] for log in logs}, requests


def limits_table():
    for _ in range(200):
        of = random.choice([1, 30, 1000, 10**6])
        units = random.choice([0, 1, random.randint(1, 300), random.randint(1, 10**5)])
        passed = random.choice([0, of, random.randint(0, of), of - random.randint(0, of) // 20])
        yield [units, passed, of] + limits(units, passed, of)


def main():
    random.seed(int(sys.argv[1]))
    plants = [plant() for _ in range(int(sys.argv[2]))]
    if len(sys.argv) == 3:
        made = [
            {
                "logs": [[a.station, a.serial, a.time.isoformat(), "".join(a.marks)[::-1]] for a in logs],
                "declared": declared,
                "requests": requests,
            }
            for logs, declared, _, requests in plants
        ]
        json.dump({"now": NOW.isoformat(), "plants": made, "limits": list(limits_table())}, sys.stdout)
        return
    for p, (logs, _, tests_18, requests) in enumerate(plants):
        for r, request in enumerate(requests):
            page = ElementTree.parse(f"{sys.argv[3]}/{p}-{r}.html")
            for wrong in wrongs(page, logs, tests_18, request):
                print(f"page {p}-{r}, {request}:", *wrong, sep="\n  ")
            print("CHECKED")


if __name__ == "__main__":
    main()
