#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# The sounds of a run, recorded from the other end of a loopback card that is the default device.
. "$(dirname "$0")/station.sh"

modprobe snd-aloop index=0 pcm_substreams=1
# Straight to the card: what comes out of its other end has not been mixed or resampled.
echo 'pcm.!default { type plug slave.pcm "hw:Loopback,0" }' > "${tree:-}/root/.asoundrc"
start_station zorvi_assembly_test
playing() { grep -q RUNNING /proc/asound/Loopback/pcm0p/sub0/status; }
check 'the station plays on the default device' wait_for playing
cat /proc/asound/Loopback/pcm0p/sub0/hw_params

build_unit unit Zorvi_Control
plug unit
wait_for is_linked_to 'Zorvi_Control MIDI 1'
recording=/tmp/recording.raw
arecord -q -t raw -D plughw:Loopback,1 -f S16_LE -r 44100 -c 1 -B 2000000 "$recording" &
recorder=$!
wait_for test -s "$recording"

# Slowly enough for each bell to be alone. Controller 2 is moved before fader 1 is done.
type_serial SOUNDS
speak unit
pace=0.2
say 0xB0 2 64
pause 1
pace=0.03
for controller in {1..9}; do touch_bands "$controller" 0 12; done
pace=0.2
for note in {1..29}; do press 1 "$note"; done
pace=0.03
for controller in {10..13}; do touch_bands "$controller" 0 12; done
pause 2
kill "$recorder"
wait "$recorder"
cp "$recording" /run/output/4-sounds.raw
check 'the run is complete' log_is_complete SOUNDS
mapfile -t heard < <(/usr/bin/python3 "$here/ears.py" "$recording" "$bin")
note "heard: ${heard[*]}"
check 'a bell for each of the 42 controls that passed' test "${heard[0]}" = 'Bell 42'
check 'a beep for the control that was moved too early' test "${heard[1]}" = 'Beep 1'
stop_station
rm "${tree:-}/root/.asoundrc"
