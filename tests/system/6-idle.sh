#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# A minute in which nothing happens, with a unit connected: what the MIDI thread takes.
. "$(dirname "$0")/station.sh"

start_station zorvi_assembly_test
connect_unit
pause 3

# thread_named PATTERN: not the first one, which has the program's name.
thread_named() { grep -lE "^($1)\$" /proc/"$station"/task/*/comm | grep -v "/$station/comm"; }
# JUCE 9 asks for a name that is too long for the kernel, so its thread keeps the program's.
thread=$(dirname "$(thread_named 'JUCE MIDI Input|JUCE v.*: AL.*' || thread_named zorvi_assembly_)")
wakeups() { awk '/^voluntary/ { print $2 }' "$thread/status"; }
cpu_ms() { awk '{ printf "%d", $1 / 1e6 }' "$thread/schedstat"; }
wakeups_before=$(wakeups) cpu_before=$(cpu_ms)
pause 60
wakeups=$(($(wakeups) - wakeups_before)) cpu=$(($(cpu_ms) - cpu_before))
note "MIDI thread, idle for 60 s, unit connected: $wakeups wake-ups, $cpu ms of CPU time"
# It looks ten times a second whether it is to end.
check 'the MIDI thread sleeps: fewer than 20 wake-ups a second' test "$wakeups" -lt 1200
check 'the MIDI thread takes less than a hundredth of a processor' test "$cpu" -lt 600
