#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# A unit on a USB cable: found, tested, pulled out in the middle, plugged in again and again, next to a
# program that connects whatever it can.
. "$(dirname "$0")/station.sh"

# As session managers do: each new port is connected to one port, and that one to each new program.
connect_new_ports() {
    local event kind address
    while read -r _ event kind address _; do
        [ "$event $kind" = 'Port start' ] || continue
        aconnect "$address" 14:0
        # Not to a card: the unit's own would be taken by that.
        [ "${address%:*}" -lt 128 ] || aconnect 14:0 "$address"
    done
}
modprobe snd-seq-dummy # has the port 14:0
aseqdump -p 0:1 > >(connect_new_ports 2> /dev/null) &
connects_new_ports() { grep -q '"aseqdump"' /proc/asound/seq/clients; }
check 'another program connects new ports' wait_for connects_new_ports

start_station zorvi_assembly_test
linked() { wait_for is_linked_to 'Zorvi_Control MIDI 1'; }

build_unit unit Zorvi_Control
plug unit
check 'a unit is found' linked
is_read_by_others() { grep -A2 '"Zorvi_Control MIDI 1"' /proc/asound/seq/clients | grep -q ' 14:0'; }
check 'the other program reads the unit too' wait_for is_read_by_others

type_serial WHOLE
speak unit
for controller in {1..9}; do turn "$controller" 0 127; done
for note in {1..29}; do press 1 "$note"; done
for controller in {10..13}; do turn "$controller" 127 0; done
for controller in {10..13}; do turn "$controller" 0 127; done
check 'a whole run, every value of every control: the unit passes' has_passed WHOLE
check 'the notice comes and goes' close_notice

type_serial PULLED
turn 1 0 63
hush
unplug unit
check 'the cable is pulled: the station closes the input' wait_for is_let_go
plug unit
check 'the cable is put back: the unit is found' linked
speak unit
turn 1 64 127
work_from 2
check 'the bands covered before the cable was pulled have stayed' has_passed PULLED
close_notice

# replugs SERIAL COMMAND...: 20 times, with the command while the unit is out. One band in each link,
# so that the log tells whether each was received: 13 of the first fader, 7 of the second.
replugs() {
    local serial=$1 links=0 replug
    shift
    type_serial "$serial"
    hush
    for ((replug = 0; replug < 20; ++replug)); do
        unplug unit
        "$@"
        plug unit
        linked && links=$((links + 1))
        speak unit
        touch_bands $((1 + replug / 13)) $((replug % 13)) $((replug % 13))
        hush
    done
    check "$serial: 20 replugs, 20 links" test "$links" = 20
    speak unit
    touch_bands 2 7 12
    work_from 3
    check "$serial: each of the 20 links was received" has_passed "$serial"
    close_notice
}
replugs REPLUGGED wait_for is_let_go
# As after a shock of static. Most fall between two polls of the station, and the label stays.
replugs MOMENT pause 0.2
