#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# The desktop's own sound servers, PipeWire and WirePlumber: with a card, with speakers only, with the
# dummy output, without any device, and with a session manager that ends in mid-run.
. "$(dirname "$0")/station.sh"

tar -C "$project/build/system/desktop${tree:+-${tree##*/}}" -c . | tar -x --keep-directory-symlink -C "${tree:-/}"
rm -f "${tree:-}/etc/alsa/conf.d/99-pulse.conf" # of PulseAudio
export SYSTEMD_IGNORE_CHROOT=1
/lib/systemd/systemd-udevd --daemon
modprobe -r snd-aloop # an earlier group took the card away
modprobe snd-aloop index=0 pcm_substreams=1
udevadm trigger && udevadm settle
# What WirePlumber needs of a session.
export XDG_RUNTIME_DIR=/run/user/0 DBUS_SESSION_BUS_ADDRESS=unix:path=/run/user/0/bus
mkdir -p "$XDG_RUNTIME_DIR" /run/systemd/{seats,sessions,users,machines} && chmod 700 "$XDG_RUNTIME_DIR"
${tree:+chroot "$tree"} dbus-daemon --session --address="$DBUS_SESSION_BUS_ADDRESS" --fork

# serve SERVER...: starts these, each known by its name. Without real-time priority, with which they leave
# nothing of an emulated processor to the station.
declare -A servers
serve() {
    local server
    for server; do
        ${tree:+chroot "$tree"} setpriv --bounding-set -sys_nice "$server" &
        servers[$server]=$!
    done
}
# end_servers SERVER...
end_servers() {
    local server
    for server; do
        kill "${servers[$server]}"
        wait "${servers[$server]}"
    done
}
has_sink() { timeout -k 1 10 pactl list short sinks | grep -q "$1"; }

# beep_is_recorded CONTROLLER: moves this one too early. Only the level counts: the emulated card repeats
# and loses blocks.
beep_is_recorded() {
    turn "$1" 64 64
    pause 1
    level=$(/usr/bin/python3 -c 'import numpy
print(max(abs(numpy.fromfile("/tmp/recording", "<i2").astype(int)), default=0))')
    [ "$level" -gt 300 ]
}
# is_heard CONTROLLER: in what the sound server plays. While a session manager starts, pactl may get no
# answer; there is one sink at a time.
finds_sink() { sink=$(timeout -k 1 10 pactl list short sinks | cut -f 2) && [ -n "$sink" ]; }
is_heard() {
    local recorder sink status
    wait_for finds_sink || return
    rm -f /tmp/recording
    parec --raw --format=s16le --channels=1 --latency-msec=50 -d "$sink.monitor" > /tmp/recording &
    recorder=$!
    wait_for beep_is_recorded "$1"
    status=$?
    note "highest sample of a beep: $level of 32767"
    kill -KILL "$recorder"
    wait "$recorder"
    return "$status"
}

start_linked() {
    start_station zorvi_assembly_test
    wait_for is_linked_to 'Zorvi_Control MIDI 1'
}

# close_station: succeeds if it ends by itself, with status 0.
close_station() {
    local closing=$station
    station='' # it may end now
    /usr/bin/python3 "$here/close_window.py" "$(xdotool search --onlyvisible --class zorvi_assembly_test)"
    wait_for test ! -d "/proc/$closing" || kill -KILL "$closing"
    wait "$closing"
}
run_and_close() {
    type_serial "$1"
    work_from "${2:-1}"
    check "$1: a whole run" has_passed "$1"
    check "$1: the notice comes and goes" close_notice
    check "$1: the window closes, status 0" close_station
}

build_unit unit Zorvi_Control
plug unit
serve pipewire
wait_for test -S "$XDG_RUNTIME_DIR/pipewire-0"
serve wireplumber pipewire-pulse
check 'PipeWire has the card' wait_for has_sink alsa_output
speak unit # for the whole group: a session manager that starts again connects the unit's own port

start_linked
card_ms=$window_ms
check 'card: a beep is heard' is_heard 2
run_and_close CARD

pactl set-card-profile "$(pactl list short cards | cut -f2)" output:analog-stereo
start_linked
check 'speakers only: a beep is heard' is_heard 2
check 'speakers only: the window closes, status 0' close_station

start_linked
touch_bands 1 0 5
end_servers wireplumber
touch_bands 1 6 12
serve wireplumber
run_and_close ENDED 2
check 'WirePlumber started again: the card is back' wait_for has_sink alsa_output
start_linked
check 'WirePlumber started again: a beep is heard' is_heard 2
check 'WirePlumber started again: the window closes, status 0' close_station

echo snd_aloop.0 > /sys/bus/platform/drivers/snd_aloop/unbind &
check 'PipeWire has its dummy output' wait_for has_sink auto_null
start_linked
check 'dummy output: a beep is heard' is_heard 2
run_and_close DUMMY

end_servers pipewire-pulse # the dummy output is its own
start_linked
# Twice the time for a machine whose load changes.
check 'no device: the window comes within 5 s of the time with a card' \
    test "$window_ms" -lt $((2 * card_ms + 5000))
run_and_close NODEVICE

start_linked
end_servers wireplumber pipewire
touch_bands 1 0 12
check 'PipeWire ended in mid-run: the window closes, status 0' close_station
