#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# Which station, and which port: the TARVEK station, units of other names, a unit with two ports.
. "$(dirname "$0")/station.sh"

start_station zorvi_assembly_test_TARVEK
build_unit other Zorvi_Control_2
build_unit lower zorvi_control
build_unit double Zorvi_Control 2
plug other 0
plug lower 1
ports_are_listed() {
    [ "$(grep -ciE '^  Port.*"Zorvi_Control(_2)? MIDI [12]"' /proc/asound/seq/clients)" = "$1" ]
}
check 'two ports of other names are there' wait_for ports_are_listed 2
plug double 2
check 'of all ports the station takes the first one of the unit with two' \
    wait_for is_linked_to 'Zorvi_Control MIDI 1'
cat /proc/asound/seq/clients
screenshot ports

type_serial TARVEK
speak double
work_from 1 TARVEK
check 'the TARVEK station tests component 18 too' log_says TARVEK passed --tests-component-18
screenshot tarvek
close_notice

hush
unplug double
check 'the unit is let go' wait_for is_let_go
# Three polls of the station.
pause 4
check 'the names that differ are still there, and still not linked' is_linked_to ''
check 'their ports are listed' ports_are_listed 2
