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
modprobe snd-aloop index=0 pcm_substreams=1
udevadm trigger && udevadm settle
# What WirePlumber needs of a session.
export XDG_RUNTIME_DIR=/run/user/0 DBUS_SESSION_BUS_ADDRESS=unix:path=/run/user/0/bus
mkdir -p "$XDG_RUNTIME_DIR" /run/systemd/{seats,sessions,users,machines} && chmod 700 "$XDG_RUNTIME_DIR"
${tree:+chroot "$tree"} dbus-daemon --session --address="$DBUS_SESSION_BUS_ADDRESS" --fork

# serve SERVER...: starts these, each known by its name.
declare -A servers
serve() {
    local server
    for server; do
        ${tree:+chroot "$tree"} "$server" &
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

# is_heard: what the sound server plays while a band is touched. Its level, because the emulated card
# repeats and loses blocks.
is_heard() {
    local recording=/tmp/level.raw level recorder
    rm -f "$recording"
    timeout -k 1 120 parec --raw --format=s16le --channels=1 -d @DEFAULT_MONITOR@ > "$recording" &
    recorder=$!
    wait_for test -s "$recording"
    touch_bands "$1" "$2" "$2"
    pause 3
    kill "$recorder"
    wait "$recorder"
    level=$(/usr/bin/python3 -c 'import numpy, sys
print(max(abs(numpy.fromfile(sys.argv[1], "<i2").astype(int)), default=0))' "$recording")
    note "highest sample of a click: $level of 32767"
    [ "$level" -gt 300 ]
}

# start_timed: the time until the window is there, in ms.
start_timed() {
    local begin
    begin=$(date +%s%3N)
    start_station zorvi_assembly_test
    started_ms=$(($(date +%s%3N) - begin))
    wait_for is_linked_to 'Zorvi_Control MIDI 1'
    speak unit
}

# close_station: succeeds if it ends by itself, with status 0.
close_station() {
    local closing=$station
    station='' # it may end now
    hush
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

start_timed
card_ms=$started_ms
note "window with a card after $card_ms ms"
check 'card: a click is heard' is_heard 1 0
run_and_close CARD

pactl set-card-profile "$(pactl list short cards | cut -f2)" output:analog-stereo
start_timed
check 'speakers only: a click is heard' is_heard 1 0
touch_bands 1 1 12
check 'speakers only: the window closes, status 0' close_station

start_timed
touch_bands 1 0 5
end_servers wireplumber
touch_bands 1 6 12
serve wireplumber
run_and_close ENDED 2
check 'WirePlumber started again: the card is back' wait_for has_sink alsa_output
start_timed
check 'WirePlumber started again: a click is heard' is_heard 1 0
check 'WirePlumber started again: the window closes, status 0' close_station

echo snd_aloop.0 > /sys/bus/platform/drivers/snd_aloop/unbind &
check 'PipeWire has its dummy output' wait_for has_sink auto_null
start_timed
check 'dummy output: a click is heard' is_heard 1 0
run_and_close DUMMY

end_servers pipewire-pulse # the dummy output is its own
start_timed
note "window without any device after $started_ms ms"
check 'no device: the window comes within 5 s of the time with a card' \
    test "$started_ms" -lt $((card_ms + 5000))
run_and_close NODEVICE

start_timed
end_servers wireplumber pipewire
touch_bands 1 0 12
check 'PipeWire ended in mid-run: the window closes, status 0' close_station
