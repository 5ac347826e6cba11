#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# The sounds of a run, counted in what the station hands over to ALSA: a busy emulated card repeats and
# loses blocks, which the station cannot prevent.
. "$(dirname "$0")/station.sh"

played=/tmp/played.raw # a chroot sees /tmp
cat > "${tree:-}/root/.asoundrc" <<ALSA
pcm.!default {
    type asym
    capture.pcm "plughw:Loopback,0"
    playback.pcm { type plug slave { pcm copied format S16_LE channels 1 rate 44100 } }
}
pcm.copied { type file slave.pcm "plughw:Loopback,0" file "$played" format raw }
ALSA
start_on_card
connect_unit

has_played() { [ "$(stat -c %s "$played")" -gt "$1" ]; }
# Waits for 20,000 samples more, half a bell: bells that are requested before the next block are one.
ring_out() { wait_for has_played $(($(stat -c %s "$played") + 40000)); }
passes() { # component
    wait_for grep -q "^Component num $1\$" "/run/output/$group.log" && ring_out
}

type_serial SOUNDS
turn 2 64 64 # before fader 1 is done
ring_out
for component in {0..8}; do touch_bands $((component + 1)) 0 12 && passes "$component"; done
for component in {9..17}; do press 1 $((component - 8)) && passes "$component"; done
for component in {19..38}; do press 1 $((component - 9)) && passes "$component"; done
for component in {40..43}; do touch_bands $((component - 30)) 0 12 && passes "$component"; done
check 'the run passes' has_passed SOUNDS
rm "${tree:-}/root/.asoundrc"

cp "$played" /run/output/
mapfile -t sounds < <(/usr/bin/python3 "$here/detect_sounds.py" "$played" "$bin")
note "played: ${sounds[*]}"
check 'the station plays a bell for each of the 42 controls that passed' test "${sounds[0]}" = 'Bell 42'
check 'the station plays a beep for the control that was moved too early' test "${sounds[1]}" = 'Beep 1'
