#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
"""What power cuts would have lost: powercut.py DISK SAVES ZORVI_YIELD.

DISK is as recordedwrites.py says. SAVES is a folder with each log that the station saved, NUMBER.SERIAL.
The kernel recovers the disk after each cut. Prints how many cuts were tried, and what was lost in how
many of them.
"""
import collections
import contextlib
import ctypes
import datetime
import hashlib
import os
import pathlib
import re
import sqlite3
import subprocess
import sys

import recordedwrites


def saves_in(folder):
    """By number: the serial and the bytes."""
    saves = {}
    for path in folder.iterdir():
        number, serial = path.name.split(".", 1)
        saves[int(number)] = serial, path.read_bytes()
    return saves


def stored_as(log):
    """How the database names a log."""
    serial, date = re.search(rb"\nZORVI\t#(.*)\t(.*)\n", log).groups()
    return serial.decode(), datetime.datetime.strptime(date.decode(), "%a %b %d %H:%M:%S %Y").isoformat()


def rows_of(database):
    with contextlib.closing(sqlite3.connect(database)) as connection:
        if not connection.execute("SELECT 1 FROM sqlite_master WHERE name = 'repeated_saves'").fetchone():
            return []
        return connection.execute("""
            SELECT serial, tested_at FROM attempts
            UNION ALL SELECT serial, tested_at FROM repeated_saves""").fetchall()


def read(path):
    return path.read_bytes() if path.exists() else None


def lost_logs(folder, saves, saved):
    """Gives their serials. The station flushes a log before the log takes the old one's place: the last
    save may be undone by the cut, no earlier one."""
    for serial in {serial for serial, _ in saves.values()}:
        own = {number: log for number, (name, log) in saves.items() if name == serial}
        sure = max((number for number in own if number < saved), default=0)
        can_be = {log for number, log in own.items() if number >= sure} | (set() if sure else {None})
        if read(folder / "Logs" / f"ZORVI_{serial}.txt") not in can_be:
            yield serial


checked = {}  # the answer for the same bytes is the same


def is_content(zorvi_yield, database):
    """After SQLite has undone what was half done."""
    content = database.read_bytes()
    if content not in checked:
        command = [zorvi_yield, "check", "--database", database]
        checked[content] = subprocess.run(command, stdout=subprocess.DEVNULL, check=False).returncode == 0
    return checked[content]


def losses(folder, saves, marks, zorvi_yield):
    """Gives a word for each thing that was lost."""
    numbers = {"saved": [0], "kept": [], "new:": []}
    for word, number in (mark.split(" ")[:2] for mark in marks):
        if word in numbers:
            numbers[word].append(int(number))
    for _ in lost_logs(folder, saves, numbers["saved"][-1]):
        yield "a log"
    rows, database = [], folder / "attempts.sqlite"
    try:
        rows = rows_of(database)
        if numbers["new:"] and not is_content(zorvi_yield, database):
            yield "the database"
    except sqlite3.Error:
        yield "the database"
    if len(rows) < sum(numbers["new:"]):
        yield "an attempt"
    spool = {}
    for path in folder.glob("spool/v1/*/logs/*"):
        spool[path.name] = hashlib.sha256(path.read_bytes()).hexdigest()
        if not path.name.startswith(".") and path.name != spool[path.name]:
            yield "a whole log of the spool"
    for number in numbers["kept"]:
        log = saves[number][1]
        if hashlib.sha256(log).hexdigest() not in spool and stored_as(log) not in rows:
            yield "a log of the spool"


def attached(image, size):
    """A device that shows the image. Its file system is mounted without a process: there are many cuts."""
    with open(image, "wb") as file:
        file.truncate(size)
    return subprocess.check_output(["losetup", "-f", "--show", image]).strip()


def main(disk, saves_folder, zorvi_yield):
    disk, saves_folder = pathlib.Path(disk), pathlib.Path(saves_folder)
    place, image = pathlib.Path(f"/mnt/cut-{disk.name}"), saves_folder.with_suffix(".image")
    place.mkdir()
    device = attached(image, os.path.getsize(f"{disk}.base"))
    kind = disk.name.split("-")[0].encode()
    libc = ctypes.CDLL(None)
    saves = saves_in(saves_folder)
    tried, cuts_with = 0, collections.Counter()
    for marks in recordedwrites.cuts(disk, image):
        tried += 1
        lost = {"the file system"}
        if libc.mount(device, bytes(place), kind, 0, None) == 0:
            lost = set(losses(place, saves, marks, zorvi_yield))
            if libc.umount(bytes(place)) != 0:
                raise OSError(f"{place} cannot be unmounted")
        if lost:
            print(f"cut {tried}: lost {', '.join(sorted(lost))}; marks: {marks[-3:]}", file=sys.stderr)
            cuts_with.update(lost | {"something"})
    something = cuts_with.pop("something", 0)
    details = [f", {name} in {count}" for name, count in sorted(cuts_with.items())]
    print(f"{tried} cuts, {something} lost something", *details, sep="")


main(*sys.argv[1:])
