# shellcheck shell=bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# Units: USB MIDI devices that the kernel plays itself, plugged into its own USB sockets, and what
# such a unit sends.
gadgets=/sys/kernel/config/usb_gadget

# build_unit ID NAME [PORTS]: a unit with that product string.
build_unit() {
    local gadget=$gadgets/$1 midi=$gadgets/$1/functions/midi.usb0
    mkdir -p "$gadget/strings/0x409" "$gadget/configs/c.1" "$midi"
    echo 0x1d6b > "$gadget/idVendor"
    echo 0x0104 > "$gadget/idProduct"
    echo "$2" > "$gadget/strings/0x409/product"
    echo "$1" > "$midi/id"
    echo "${3:-1}" > "$midi/in_ports"
    echo "${3:-1}" > "$midi/out_ports"
    ln -s "$midi" "$gadget/configs/c.1/"
}

# plug ID [SOCKET]: the cable, into socket 0, 1 or 2.
plug() { echo "dummy_udc.${2:-0}" > "$gadgets/$1/UDC"; }
unplug() { echo '' > "$gadgets/$1/UDC"; }

# connect_unit: a unit that the station finds, and whose messages say sends.
connect_unit() {
    build_unit unit Zorvi_Control
    plug unit
    check 'the unit is found' wait_for is_linked_to 'Zorvi_Control MIDI 1'
    speak unit
}

take_units_apart() {
    local gadget
    for gadget in "$gadgets"/*; do
        [ -d "$gadget" ] || continue
        unplug "$(basename "$gadget")"
        rm "$gadget/configs/c.1/midi.usb0"
        rmdir "$gadget/functions/midi.usb0" "$gadget/configs/c.1" "$gadget/strings/0x409" "$gadget"
    done 2> /dev/null
}

# pause SECONDS: without a process, which would take longer.
exec {never}<> <(:)
pause() { read -rt "$1" -u "$never" || true; }

# speak ID: from here on say is this unit's, until it is unplugged.
speak() {
    local card
    card=$(readlink "/proc/asound/$1") || return
    exec {cable}> "/dev/snd/midiC${card#card}D0"
}
hush() { exec {cable}>&-; }

# say BYTE...: one MIDI message, at the pace of a hand.
pace=0.005
say() {
    local bytes
    printf -v bytes '\\x%02x' "$@"
    printf '%b' "$bytes" >&"$cable"
    pause "$pace"
}

# turn CONTROLLER FIRST LAST [STEP]: a fader or a rotary; faders have the controllers 1 to 9,
# rotaries 10 to 13.
turn() {
    local value
    for ((value = $2; value <= $3; value += ${4:-1})); do
        say 0xB0 "$1" "$value"
    done
}

# touch_bands CONTROLLER FIRST LAST: one value of each of these bands, 0 to 12.
touch_bands() { turn "$1" $(($2 * 10 + 5)) $(($3 * 10 + 5)) 10; }

# press CHANNEL NOTE: a button; they have the notes 1 to 29 on channel 1, and one has channel 2.
press() {
    say $((0x90 + $1 - 1)) "$2" 127
    say $((0x80 + $1 - 1)) "$2" 0
}

# work_from CONTROLLER [TARVEK]: the rest of a run, from this fader on; TARVEK: as a TARVEK station tests it.
work_from() {
    local number
    for ((number = $1; number <= 9; ++number)); do touch_bands "$number" 0 12; done
    for number in {1..9}; do press 1 "$number"; done
    [ "${2:-}" != TARVEK ] || press 2 0
    for number in {10..29}; do press 1 "$number"; done
    for number in {10..13}; do touch_bands "$number" 0 12; done
}
