# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
"""What a power cut leaves on a disk, from a record of its writes as QEMU's blklogwrites makes it."""
import os
import random
import struct
import subprocess

SECTOR = 512
MAGIC = 0x6A736677736872
FLUSH = 1
SHARE_OF_WRITES = 0.05  # so many of the writes are followed by a cut


def _entries(path):
    """Yields (flags, first byte, bytes) for each write and flush."""
    with open(path, "rb") as record:
        magic, _, count, sector = struct.unpack("<QQQI", record.read(28))
        if (magic, sector) != (MAGIC, SECTOR):
            raise ValueError(f"{path} is no record of a disk's writes")
        record.seek(SECTOR)
        for _ in range(count):
            first, sectors, flags, _ = struct.unpack("<QQQQ", record.read(SECTOR)[:32])
            yield flags, first * SECTOR, record.read(sectors * SECTOR)


def _write(image, writes):
    with open(image, "r+b") as disk:
        for first, data in writes:
            disk.seek(first)
            disk.write(data)


def _copy(source, target):
    subprocess.run(["cp", "--sparse=always", source, target], check=True)


def cuts(disk, image):
    """For each cut, writes the disk as it may have left it into the image and yields the marks before it.

    DISK.base is the disk before the first of DISK.writes. A cut leaves all that was written before the last
    flush, and of the rest nothing or any part. Tested are: for each flush, just before it is done, nothing;
    at random moments between, a part. A mark is a write to the disk's last sector.
    """
    flushed = f"{image}.flushed"
    _copy(f"{disk}.base", flushed)
    last_sector = os.path.getsize(flushed) - SECTOR
    chance = random.Random(1)
    rest, marks = [], []
    for flags, first, data in _entries(f"{disk}.writes"):
        if flags & FLUSH:
            if rest:
                _copy(flushed, image)
                yield marks
            _write(flushed, rest)
            rest = []
        elif first == last_sector:
            marks.append(int(data))
        else:
            rest.append((first, data))
            if chance.random() < SHARE_OF_WRITES:
                _copy(flushed, image)
                _write(image, [write for write in rest if chance.random() < 0.5])
                yield marks
