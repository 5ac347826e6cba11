#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# zorvi_unit and each of its faults over the kernel's sequencer. A fault that keeps a control from
# passing leaves the run there.
. "$(dirname "$0")/station.sh"

# run_unit FAULT
run_unit() {
    wait_for is_let_go
    press_start_test
    type_serial "$1"
    (start zorvi_unit --delay 4 --pace 600 --fault "$1") > /dev/null
}

save_and_read() {
    press_save_log
    pause 0.5
    log_says "$@"
}

start_station zorvi_assembly_test
for fault in none too-early cable-pulled chatter flood; do
    run_unit "$fault"
    check "zorvi_unit --fault $fault: the run passes" has_passed "$fault"
    close_notice
done

# stays_at FAULT RESULT: the run stays at the control, and the log ends there.
stays_at() {
    run_unit "$1"
    check "zorvi_unit --fault $1: the run stays at the control" \
        wait_for save_and_read "$1" "aborted at $2"
}
stays_at stuck 'Fader 4, missed Fader 3: 0 to 59, 70 to 127'
stays_at no-low-end 'Fader 3, missed Fader 2: 0 to 9'
stays_at no-high-end 'Rotary 2, missed Rotary 1: 120 to 127'
screenshot stays
stays_at weak-button 'Button 3, missed Button 2: pressed'
stays_at swapped 'Fader 6'
