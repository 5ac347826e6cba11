#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
"""Counts the station's sounds in a recording: detect_sounds.py RECORDING FOLDER_WITH_THE_SOUNDS.

The recording is plain 16-bit samples, one channel at 44.1 kHz, as the sounds are. A sound is found by
correlation with a part of its file that no other sound is like, at the level it is played with; of two
that begin within the distance only the louder counts.
"""
import sys
import wave

import numpy
from scipy.signal import oaconvolve

# name, level, part of the file: first sample and length, distance in samples
SOUNDS = [("Bell", 50 / 127, 250, 1250, 8000), ("Beep", 100 / 127, 1000, 1000, 6000)]

# Share of the level that a sound is played with. Measured: a beep alone reaches 0.51 of a bell, the bells of
# a run, with clicks beside them, 0.68 and more.
MIN_LEVEL = 0.6


def sound_file(path):
    with wave.open(path) as file:
        return numpy.frombuffer(file.readframes(file.getnframes()), "<i2") / 32768


recording = numpy.trim_zeros(numpy.fromfile(sys.argv[1], "<i2")) / 32768
for name, level, first, length, distance in SOUNDS:
    part = sound_file(f"{sys.argv[2]}/Zorvi_AssemblyTest_{name}.wav")[first : first + length]
    levels = oaconvolve(recording, part[::-1])[length - 1 :] / (level * part.dot(part))
    found = [i for i in numpy.flatnonzero(levels > MIN_LEVEL) if levels[i] == levels[max(0, i - distance) : i + distance].max()]
    print(name, len(found))
    print(" ".join(f"{i / 44100:.3f}={levels[i]:.2f}" for i in found), file=sys.stderr)
