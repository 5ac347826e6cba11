#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# zorvi_unit over the kernel's sequencer, with the faults that concern it, and one that keeps a control
# from passing: the run stays there.
. "$(dirname "$0")/station.sh"

# run_unit FAULT
run_unit() {
    wait_for is_let_go
    press_start_test
    type_serial "$1"
    (start zorvi_unit --delay 4 --pace 600 --fault "$1") > /dev/null
}

stays_at() { # control and missed bands
    press_save_log
    pause 0.5
    log_says stuck "aborted at $1"
}

start_station zorvi_assembly_test
for fault in none too-early cable-pulled chatter flood; do
    run_unit "$fault"
    check "zorvi_unit --fault $fault: the run passes" has_passed "$fault"
    close_notice
done

run_unit stuck
check 'zorvi_unit --fault stuck: the run stays at the control' \
    wait_for stays_at 'Fader 4, missed Fader 3: 0 to 59, 70 to 127'
