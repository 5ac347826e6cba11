#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# Makes the station's three sounds beside this script, 44.1 kHz, 16 bit, mono. Each has a register
# and a shape of its own, so that they are told apart on a noisy floor: the beep a flat reedy tone,
# the click a short high tick, the bell a high strike of inharmonic partials that rings out. The
# levels leave room for the loudest moment the station can make; a test of the sound engine
# measures it.
set -euo pipefail
cd "$(dirname "$0")"

make_sound() { # name, synthesis and effects
    local name=$1
    shift
    sox -D -n -r 44100 -b 16 -c 1 "Zorvi_AssemblyTest_$name.wav" "$@"
}

# A square wave without its sharpest edges. It swells for as long as the tick of the click lasts
# that sounds along with it.
make_sound Beep synth 0.15 square 740 vol 0.5 lowpass 5000 fade h 0.02 0.15 0.01 gain -n -10

# A few milliseconds of a high tone under a steep decay. The engine fades this sound in over 10 ms,
# so the tick waits until then; at the file's start it would hardly be heard.
make_sound Click synth 0.006 sine 2600 fade q 0.0005 0.006 0.005 gain -n -5 pad 0.01 0.001

# Partials of a small bell, the high ones gone first. Each falls evenly in decibels and is cut off
# where the file ends, 60 dB down or more.
bell_partial() { # frequency, share, seconds until it would be 100 dB down
    sox -n -r 44100 -c 1 -p synth "$3" sine "$1" fade l 0.002 "$3" "$3" vol "$2"
}
sox -D -m <(bell_partial 1568 0.50 2.0) <(bell_partial 3763 0.25 1.4) \
    <(bell_partial 5910 0.15 0.9) <(bell_partial 8467 0.10 0.6) \
    -b 16 Zorvi_AssemblyTest_Bell.wav trim 0 1.2 fade h 0 1.2 0.05 gain -n -12
