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
    "$bin/zorvi_unit" --delay 4 --pace 300 --fault "$1" > /dev/null
}

save_and_read() {
    press_save_log
    pause 0.5
    log_says "$@"
}

start_station zorvi_assembly_test
for fault in none too-early cable-pulled chatter flood; do
    run_unit "$fault"
    check "zorvi_unit --fault $fault: the run is complete" log_is_complete "$fault"
    close_notice
done

# stays_at FAULT COVERED LINE: bands covered in all, and what the log says of the faulty control.
stays_at() {
    run_unit "$1"
    check "zorvi_unit --fault $1: the run stays at the control" \
        wait_for save_and_read "$1" "serial $1, $2 of 229 bands covered" "not covered: component $3"
}
stays_at stuck 40 '3: 0 1 2 3 4 5 7 8 9 10 11 12'
stays_at no-low-end 38 '2: 0'
stays_at no-high-end 200 '41: 12'
screenshot stays
stays_at weak-button 122 '11: 1'
stays_at swapped 78 '6: 0 1 2 3 4 5 6 7 8 9 10 11 12'
