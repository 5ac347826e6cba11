#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# The sounds of a run: what the station plays, as it hands it over, and what comes out of the other end
# of a loopback card. A busy emulated card repeats and loses blocks, which the station cannot prevent.
. "$(dirname "$0")/station.sh"

played=/tmp/played.raw recorded=/tmp/recorded.raw # a chroot sees /tmp
cat > "${tree:-}/root/.asoundrc" <<ALSA
pcm.!default {
    type asym
    capture.pcm "plughw:Loopback,0"
    playback.pcm { type plug slave { pcm copied format S16_LE channels 1 rate 44100 } }
}
pcm.copied { type file slave.pcm "plughw:Loopback,0" file "$played" format raw }
ALSA
start_on_card
cat /proc/asound/Loopback/pcm0p/sub0/hw_params
connect_unit
arecord -q -t raw -D plughw:Loopback,1 -f S16_LE -r 44100 -c 1 -B 2000000 "$recorded" &
recorder=$!
wait_for test -s "$recorded"

# Slowly enough for each bell to be alone. Controller 2 is moved before fader 1 is done.
type_serial SOUNDS
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
check 'the run passes' has_passed SOUNDS
stop_station
rm "${tree:-}/root/.asoundrc"

for name in played recorded; do
    cp "/tmp/$name.raw" "/run/output/4-$name.raw"
    mapfile -t "$name" < <(/usr/bin/python3 "$here/detect_sounds.py" "/tmp/$name.raw" "$bin")
done
note "played: ${played[*]}; recorded: ${recorded[*]}"
check 'the station plays a bell for each of the 42 controls that passed' test "${played[0]}" = 'Bell 42'
check 'the station plays a beep for the control that was moved too early' test "${played[1]}" = 'Beep 1'
# What the card lost is in the note above.
check 'the card plays them: more than half of the bells are recorded' test "${recorded[0]#Bell }" -gt 21
