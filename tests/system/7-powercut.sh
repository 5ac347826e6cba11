#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# Power cuts: the station saves logs and zorvi_yield imports them on disks whose every write is
# recorded. Then powercut.py looks at what a cut at each moment would have left. On the disks named
# "unflushed" nothing that the two programs flush is flushed: there losses must be found.
. "$(dirname "$0")/station.sh"

modprobe -a virtio_blk loop ext4 xfs
cp /usr/lib/*/libeatmydata.so /tmp/ # a Debian in a folder sees /tmp
work=/run/powercut
looks=()

# mark TEXT: into the record of the disk's writes, behind all that is on the disk by now. Written past
# the kernel's memory into the disk's last sector, behind the file system, so that it flushes nothing.
mark() {
    printf '%-512s' "$*" |
        dd of="$disk" bs=512 count=1 seek="$(($(< "/sys/class/block/${disk##*/}/size") - 1))" \
            iflag=fullblock oflag=direct conv=notrunc status=none
}

# start_watch: what it says becomes a mark each.
start_watch() {
    local said
    exec {words}< <(exec "$built/zorvi_yield" import --watch --station line \
        --database "$folder/attempts.sqlite" --spool "$folder/spool" "$folder/Logs")
    watch=$!
    while read -r said; do mark "$said"; done <&"$words" &
    wait_for test -s "$folder/attempts.sqlite"
}

# While the database is locked, the logs wait in the spool.
lock_database() {
    coproc lock {
        exec /usr/bin/python3 -c 'import sqlite3, sys
database = sqlite3.connect(sys.argv[1], 60)
database.execute("BEGIN IMMEDIATE")
print("locked", flush=True)
sys.stdin.read()' "$folder/attempts.sqlite"
    }
    locker=$!
    read -r -u "${lock[0]}"
}
free_database() { kill "$locker" && wait "$locker"; }

log_is_new() { [ -s "$log" ] && [ "$(< "$log")" != "$before" ]; }

# save SERIAL: with one more band than the save before.
save() {
    local log before
    log=$(log_of "$1")
    before=$(cat "$log" 2> /dev/null)
    touch_bands $((1 + touched / 13)) $((touched % 13)) $((touched % 13))
    touched=$((touched + 1))
    type_serial "$1"
    press_save_log
    wait_for log_is_new || return
    saves=$((saves + 1))
    cp "$log" "$work/$name.saves/$saves.$1"
    mark "saved $saves"
}

# save_into_spool SERIAL: until the watch has flushed it and waits for the next log.
save_into_spool() {
    save "$1" || return
    wait_for test -e "$(echo "$folder"/spool/v1/*/logs)/$(sha256sum < "$(log_of "$1")" | cut -d' ' -f1)"
    until [[ $(< "/proc/$watch/syscall") = '7 '* ]]; do :; done # poll
    mark "kept $saves"
}

spool_is_empty() { ! compgen -G "$folder/spool/v1/*/logs/*" > /dev/null; }

# save_rounds COUNT: two serials again and again and new ones; half of the logs wait in the spool first.
save_rounds() {
    local round serial
    for ((round = 1; round <= $1; ++round)); do
        lock_database
        for serial in A B "${round}NEW"; do save_into_spool "$serial"; done
        free_database
        for serial in A B "${round}NEWER"; do save "$serial"; done
        wait_for spool_is_empty
        pause 0.5 # for the last mark
    done
    [ "$saves" = $((6 * $1)) ] && spool_is_empty
}

# record NAME ROUNDS: on the disk of that name.
record() {
    local name=$1 folder=/mnt/$1 disk watch words saves=0
    disk=/dev/$(basename "$(dirname "$(grep -lx "$name" /sys/block/vd*/serial)")")
    mkdir -p "$folder" "$work/$name.saves"
    mount "$disk" "$folder"
    mkdir "$folder/Logs"
    mount --bind "$folder/Logs" "$bin/Logs"
    start_watch
    check "$name: all logs are saved and stored" save_rounds "$2"
    kill "$watch"
    wait_for test ! -e "/proc/$watch"
    exec {words}<&-
    umount "$bin/Logs" "$folder"
}

# look NAME: at what cuts would have left. Its last line says what was lost.
look() {
    env -u LD_PRELOAD /usr/bin/python3 "$here/powercut.py" "/run/output/disks/$1" "$work/$1.saves" \
        "$built/zorvi_yield" > "$work/$1.result"
}

# try_disks ROUNDS NAME...: the look at one goes on while the next is recorded.
try_disks() {
    local name
    start_station zorvi_assembly_test
    wait_for is_linked_to 'Zorvi_Control MIDI 1'
    touched=0
    for name in "${@:2}"; do
        record "$name" "$1"
        look "$name" &
        looks+=($!)
    done
    stop_station
}

build_unit unit Zorvi_Control
plug unit
speak unit
try_disks 2 xfs ext4
LD_PRELOAD=/tmp/libeatmydata.so try_disks 1 xfs-unflushed ext4-unflushed
wait "${looks[@]}"
for name in xfs ext4; do
    note "$name: $(cat "$work/$name.result")"
    check "$name: no cut loses anything" grep -q '^[1-9][0-9]* cuts, 0 lost' "$work/$name.result"
    note "$name-unflushed: $(cat "$work/$name-unflushed.result")"
    check "$name: without flushes cuts lose something" \
        grep -q '^[0-9]* cuts, [1-9][0-9]* lost' "$work/$name-unflushed.result"
done
