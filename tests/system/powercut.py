#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
"""What power cuts would have lost: powercut.py DISK SAVES.

DISK: see recordedwrites.py; a mark is the number of a save. SAVES: a folder with each log that the station
saved, NUMBER.SERIAL. The kernel recovers the disk after each cut. Prints how many cuts were tested, and
what was lost in how many of them.
"""
import collections
import contextlib
import ctypes
import datetime
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
        number, serial = path.name.split(".")
        saves[int(number)] = serial, path.read_bytes()
    return saves


def row_of(log):
    serial, date = re.search(rb"\nZORVI\t#(.*)\t(.*)\n", log).groups()
    return serial.decode(), datetime.datetime.strptime(date.decode(), "%a %b %d %H:%M:%S %Y").isoformat()


def rows_of(database):
    """The logs in the database, once SQLite has undone what was half done."""
    with contextlib.closing(sqlite3.connect(database)) as connection:
        if connection.execute("PRAGMA integrity_check").fetchone() != ("ok",):
            raise sqlite3.DatabaseError
        if not connection.execute("SELECT 1 FROM sqlite_master WHERE name = 'repeated_saves'").fetchone():
            return set()
        return set(connection.execute("""
            SELECT serial, tested_at FROM attempts
            UNION ALL SELECT serial, tested_at FROM repeated_saves"""))


def losses(folder, saves, last):
    """Yields a word for each thing that is lost. last: the last save before the cut."""
    logs = {log for _, log in saves.values()}
    pending = {path.read_bytes() for path in folder.glob("Logs/Outbox/[!.]*.txt")}
    stored = {path.read_bytes() for path in folder.glob("Logs/Outbox/Stored/*/*.txt")}
    if not pending | stored <= logs:
        yield "a whole log of the outbox"
    try:
        rows = rows_of(folder / "attempts.sqlite")
    except sqlite3.Error:
        rows = set()
        yield "the database"
    for number in range(1, last + 1):
        serial, log = saves[number]
        if log not in pending and row_of(log) not in rows:
            yield "a log"
        if log not in pending | stored:
            yield "a file"
    # The station flushes a log before the log takes the old one's place: the last save may be undone.
    for serial in {serial for number, (serial, _) in saves.items() if number < last}:
        own = {number: log for number, (name, log) in saves.items() if name == serial}
        newest = max(number for number in own if number < last)
        path = folder / "Logs" / f"ZORVI_{serial}.txt"
        if not path.exists() or path.read_bytes() not in [own[number] for number in own if number >= newest]:
            yield "a log in Logs"


def attached(image, size):
    """Returns a device that shows the image."""
    with open(image, "wb") as file:
        file.truncate(size)
    return subprocess.check_output(["losetup", "-f", "--show", image]).strip()


def main(disk, saves_folder):
    disk, saves_folder = pathlib.Path(disk), pathlib.Path(saves_folder)
    place, image = pathlib.Path(f"/mnt/cut-{disk.name}"), saves_folder.with_suffix(".image")
    place.mkdir()
    device = attached(image, os.path.getsize(f"{disk}.base"))
    kind = disk.name.split("-")[0].encode()
    libc = ctypes.CDLL(None)  # mounts without a process: there are many cuts
    saves = saves_in(saves_folder)
    tested, cuts_with = 0, collections.Counter()
    for marks in recordedwrites.cuts(disk, image):
        tested += 1
        lost = {"the file system"}
        if libc.mount(device, bytes(place), kind, 0, None) == 0:
            lost = set(losses(place, saves, max(marks, default=0)))
            if libc.umount(bytes(place)) != 0:
                raise OSError(f"{place} cannot be unmounted")
        if lost:
            print(f"cut {tested}: lost {', '.join(sorted(lost))}; saves: {len(marks)}", file=sys.stderr)
            cuts_with.update(lost | {"something"})
    something = cuts_with.pop("something", 0)
    details = [f", {name} in {count}" for name, count in sorted(cuts_with.items())]
    print(f"{tested} cuts, {something} lost something", *details, sep="")


main(*sys.argv[1:])
