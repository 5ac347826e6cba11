#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
"""What power cuts would have lost: powercut.py DISK SAVES.

DISK.base is the disk before the first of its writes, DISK.writes the record of all of them, as QEMU's
blklogwrites makes it; a write to the last sector is a mark, the number of a save. SAVES: a folder with
each log that the station saved, NUMBER.SERIAL. The kernel recovers the disk after each cut. Prints how
many cuts were tested, and how many of them lost something.
"""
import contextlib
import ctypes
import datetime
import os
import pathlib
import random
import re
import sqlite3
import struct
import subprocess
import sys

SECTOR = 512
MAGIC = 0x6A736677736872
FLUSH = 1
SHARE_OF_WRITES = 0.05  # so many of the writes are followed by a cut


def entries(path):
    """Yields (flags, first byte, bytes) for each write and flush."""
    with open(path, "rb") as record:
        magic, _, count, sector = struct.unpack("<QQQI", record.read(28))
        if (magic, sector) != (MAGIC, SECTOR):
            raise ValueError(f"{path} is no record of a disk's writes")
        record.seek(SECTOR)
        for _ in range(count):
            first, sectors, flags, _ = struct.unpack("<QQQQ", record.read(SECTOR)[:32])
            yield flags, first * SECTOR, record.read(sectors * SECTOR)


def write(image, writes):
    with open(image, "r+b") as disk:
        for first, data in writes:
            disk.seek(first)
            disk.write(data)


def copy(source, target):
    subprocess.run(["cp", "--sparse=always", source, target], check=True)


def cuts(disk, image):
    """For each cut, writes the disk as it may have left it into the image and yields the marks before it.

    A cut leaves all that was written before the last flush, and of the rest nothing or any part. Tested
    are: for each flush, just before it is done, nothing; at random moments between, a part.
    """
    flushed = f"{image}.flushed"
    copy(f"{disk}.base", flushed)
    last_sector = os.path.getsize(flushed) - SECTOR
    chance = random.Random(1)
    rest, marks = [], []
    for flags, first, data in entries(f"{disk}.writes"):
        if flags & FLUSH:
            if rest:
                copy(flushed, image)
                yield marks
            write(flushed, rest)
            rest = []
        elif first == last_sector:
            marks.append(int(data))
        else:
            rest.append((first, data))
            if chance.random() < SHARE_OF_WRITES:
                copy(flushed, image)
                write(image, [part for part in rest if chance.random() < 0.5])
                yield marks


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


def main(disk, saves_folder):
    disk, saves_folder = pathlib.Path(disk), pathlib.Path(saves_folder)
    folder, image = pathlib.Path(f"/mnt/cut-{disk.name}"), saves_folder.with_suffix(".image")
    folder.mkdir()
    saves = {}
    for path in saves_folder.iterdir():
        number, serial = path.name.split(".")
        saves[int(number)] = serial, path.read_bytes()
    copy(f"{disk}.base", image)
    device = subprocess.check_output(["losetup", "-f", "--show", image]).strip()
    kind = disk.name.split("-")[0].encode()
    libc = ctypes.CDLL(None)  # mounts without a process: there are many cuts
    tested, cuts_with_losses = 0, 0
    for marks in cuts(disk, image):
        tested += 1
        lost = {"the file system"}
        if libc.mount(device, bytes(folder), kind, 0, None) == 0:
            lost = set(losses(folder, saves, max(marks, default=0)))
            if libc.umount(bytes(folder)) != 0:
                raise OSError(f"{folder} cannot be unmounted")
        if lost:
            cuts_with_losses += 1
            print(f"cut {tested}: lost {', '.join(sorted(lost))}; saves: {len(marks)}", file=sys.stderr)
    print(f"{tested} cuts, {cuts_with_losses} lost something")


main(*sys.argv[1:])
