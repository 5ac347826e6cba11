#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# Power cuts: the station saves logs and zorvi_yield collects them on disks whose every write is
# recorded. Then powercut.py checks what a cut at each moment leaves. On the disks named "unflushed"
# both programs run without flushes: there losses must be found.
. "$(dirname "$0")/station.sh"

modprobe -a virtio_blk loop ext4 xfs
cp /usr/lib/*/libeatmydata.so /tmp/ # a chroot has /tmp too
work=/run/powercut
checks=()

# mark NUMBER: into the record of the disk's writes, after all that is on the disk by now. Written past
# the kernel's cache into the disk's last sector, after the file system, so that it flushes nothing.
mark() {
    printf '%-512s' "$1" |
        dd of="$disk" bs=512 count=1 seek="$(($(< "/sys/class/block/${disk##*/}/size") - 1))" \
            iflag=fullblock oflag=direct conv=notrunc status=none
}

log_is_new() { [ -s "$log" ] && [ "$(< "$log")" != "$before" ]; }

# save SERIAL BAND: one more band, then the log. The mark means that the station has saved it.
save() {
    local log before
    log=$(log_of "$1")
    before=$(cat "$log" 2> /dev/null)
    touch_bands 1 "$2" "$2"
    type_serial "$1"
    press_save_log
    wait_for log_is_new || return
    saves=$((saves + 1))
    cp "$log" "$work/$name.saves/$saves.$1"
    mark "$saves"
}

outbox_is_empty() { ! compgen -G "$folder/Logs/Outbox/*.txt" > /dev/null; }

# test_units COUNT: each saved three times, the first two under serials that come again.
test_units() {
    local unit
    for ((unit = 1; unit <= $1; ++unit)); do
        press_start_test
        save A 0 && save B 1 && save "$unit" 2 || return
    done
    wait_for outbox_is_empty
}

# record NAME UNITS: on the disk of that name.
record() {
    local name=$1 folder=/mnt/$1 disk collector saves=0
    disk=/dev/$(basename "$(dirname "$(grep -lx "$name" /sys/block/vd*/serial)")")
    mkdir -p "$folder" "$work/$name.saves"
    mount "$disk" "$folder"
    mkdir "$folder/Logs"
    mount --bind "$folder/Logs" "$bin/Logs"
    "$built/zorvi_yield" collect --station line --database "$folder/attempts.sqlite" "$folder/Logs" &
    collector=$!
    wait_for test -d "$folder/Logs/Outbox/Rejected"
    check "$name: all logs are saved and collected" test_units "$2"
    kill "$collector"
    wait "$collector"
    umount "$bin/Logs" "$folder"
}

# record_disks UNITS NAME...: one disk is checked while the next one is recorded.
record_disks() {
    local name
    start_station zorvi_assembly_test
    wait_for is_linked_to 'Zorvi_Control MIDI 1'
    for name in "${@:2}"; do
        record "$name" "$1"
        env -u LD_PRELOAD /usr/bin/python3 "$here/powercut.py" "/run/output/disks/$name" \
            "$work/$name.saves" > "$work/$name.result" &
        checks+=($!)
    done
    stop_station
}

build_unit unit Zorvi_Control
plug unit
speak unit
record_disks 6 xfs ext4
LD_PRELOAD=/tmp/libeatmydata.so record_disks 3 xfs-unflushed ext4-unflushed
wait "${checks[@]}"
for name in xfs ext4; do
    note "$name: $(cat "$work/$name.result")"
    check "$name: no cut loses anything" grep -q '^[1-9][0-9]* cuts, 0 lost' "$work/$name.result"
    note "$name-unflushed: $(cat "$work/$name-unflushed.result")"
    check "$name: without flushes cuts lose something" \
        grep -q '^[0-9]* cuts, [1-9][0-9]* lost' "$work/$name-unflushed.result"
done
