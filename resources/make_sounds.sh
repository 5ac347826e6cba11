#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# Makes the station's three sounds in this folder, 44.1 kHz, 16 bit, mono. They differ in pitch and
# shape, so that an operator can tell them apart in a noisy room: the beep is a flat tone, the click a
# short high tick, the bell a high strike that rings out. The levels are low enough that the loudest
# moment of a run does not clip; a test of the sound engine measures it.
set -euo pipefail
cd "$(dirname "$0")"

make_sound() { # name, synthesis and effects
    local name=$1
    shift
    sox -D -n -r 44100 -b 16 -c 1 "Zorvi_AssemblyTest_$name.wav" "$@"
}

# A square wave without its sharpest edges. It fades in during the click that sounds with it.
make_sound Beep synth 0.15 square 740 vol 0.5 lowpass 5000 fade h 0.02 0.15 0.01 gain -n -10

# A few milliseconds of a high tone with a steep decay. The engine fades this sound in over 10 ms, so
# the tick starts after that.
make_sound Click synth 0.006 sine 2600 fade q 0.0005 0.006 0.005 gain -n -5 pad 0.01 0.001

# Partials of a small bell; the high ones decay first. Each is 60 dB down or more at the file's end.
bell_partial() { # frequency, share, seconds until it would be 100 dB down
    sox -n -r 44100 -c 1 -p synth "$3" sine "$1" fade l 0.002 "$3" "$3" vol "$2"
}
sox -D -m <(bell_partial 1568 0.50 2.0) <(bell_partial 3763 0.25 1.4) \
    <(bell_partial 5910 0.15 0.9) <(bell_partial 8467 0.10 0.6) \
    -b 16 Zorvi_AssemblyTest_Bell.wav trim 0 1.2 fade h 0 1.2 0.05 gain -n -12
