# shellcheck shell=bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# What the groups of tests share: results, the station, its links. Units are in unit.sh.
set -uo pipefail
here=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")
built=${project:?}/build/release/bin
bin=$built
# The station of a chroot is started in it, with its libraries.
[ -z "${tree:-}" ] || bin=$tree/station/build/release/bin
group=$(basename "$0" .sh)
failures=0
station=''
trap 'stop_station; take_units_apart; kill $(jobs -p)' EXIT
# shellcheck source-path=SCRIPTDIR
. "$here/unit.sh"

# check WHAT COMMAND...: prints whether the command succeeds.
check() {
    local what=$1
    shift
    if "$@"; then
        echo "ok ${group%%-*} $what" | tee /dev/fd/3
    else
        echo "FAILED ${group%%-*} $what" | tee /dev/fd/3
        screenshot "failed-$((++failures))"
        cat /proc/asound/seq/clients
        note "messages that the kernel dropped for slow programs: $(lost_messages)"
    fi
}

# The kernel keeps 200 messages for a program that is slow to fetch them, and drops the rest.
lost_messages() { awk '/Alloc failures/ { sum += $NF } END { print sum + 0 }' /proc/asound/seq/clients; }

# note TEXT: a figure among the results.
note() { echo "# $*" | tee /dev/fd/3; }

# end_group REASON: a failure after which the other checks could only wait.
end_group() {
    echo "FAILED ${group%%-*} $*" | tee /dev/fd/3
    exit
}

# wait_for COMMAND...: succeeds as soon as the command does, fails after two minutes. Ends the group if
# the station is not there any more.
wait_for() {
    local end=$((SECONDS + 120))
    until "$@"; do
        [ -z "$station" ] || kill -0 "$station" || end_group 'the station is not there any more'
        [ "$SECONDS" -lt "$end" ] || return 1
        pause 0.2
    done
}

screenshot() { import -window root "/run/output/$group-$1.png"; }

# --- the station ---

# start PROGRAM...: one of the station's.
start() {
    if [ -n "${tree:-}" ]; then
        exec chroot "$tree" "${bin#"$tree"}/$1" "${@:2}"
    else
        exec "$bin/$1" "${@:2}"
    fi
}

# start_station PROGRAM: with the serial number field empty and the run armed. Leaves in window_ms how
# long the window took.
start_station() {
    local begin
    begin=$(date +%s%3N)
    start "$1" &
    station=$!
    wait_for windows_are 1 || end_group 'the station has no window after two minutes'
    window_ms=$(($(date +%s%3N) - begin))
    note "window after $window_ms ms"
    # Reads its shared libraries into memory, so that it does not wait for the disk later.
    awk '/\.so/ { print $6 }' "/proc/$station/maps" | sort -u | xargs cat > /dev/null
}

# start_on_card: with a loopback card as the default device.
start_on_card() {
    modprobe snd-aloop index=0 pcm_substreams=1
    start_station zorvi_assembly_test
    check 'the station plays' wait_for grep -q RUNNING /proc/asound/Loopback/pcm0p/sub0/status
}

stop_station() {
    [ -n "$station" ] || return 0
    kill "$station"
    wait "$station"
    station=''
}

# windows_are COUNT: the station's windows on the screen, 2 while the notice is open.
windows_are() {
    [ "$(xdotool search --onlyvisible --class zorvi_assembly_test 2> /dev/null | wc -l)" = "$1" ]
}

# Places in the window, which lies in the corner of the screen. There is no window manager: the
# window under the pointer has the keyboard.
press_start_test() { xdotool mousemove 335 566 click 1; }
press_save_log() { xdotool mousemove 510 561 click 1; }
type_serial() { xdotool mousemove 375 535 click --repeat 3 1 type "$1"; }
close_notice() { wait_for windows_are 2 && xdotool key Return && wait_for windows_are 1; }

log_of() { echo "$bin/Logs/ZORVI_$1.txt"; }

# log_says SERIAL TEXT [OPTION]: the log is whole, and zorvi_yield's line about it has the text.
log_says() {
    local database said
    database=$(mktemp -u /run/yield-XXXXXX)
    wait_for test -s "$(log_of "$1")" || return
    cp "$(log_of "$1")" /run/output/
    "$built/zorvi_yield" import ${3:+"$3"} --database "$database" "$(log_of "$1")" || return
    said=$("$built/zorvi_yield" unit --database "$database" "$1")
    grep -F "  $2" <<< "$said" || { echo "not \"$2\" but: $said"; return 1; }
}

# Of a station that does not test component 18.
has_passed() { log_says "$1" passed; }

# --- links, as the kernel lists them ---

# The ports that the station's input is subscribed to. JUCE names it after the unit, JUCE 9 after itself.
linked_ports() {
    awk -F'"' '/^Client/ { split($0, word, / +/); client = word[2]; is_station = $2 == "Zorvi" }
        /^ *Port/ { split($0, word, / +/); name[client ":" word[3]] = $2
                    is_input = is_station && $2 ~ /^Zorvi(_Control.*)?$/ }
        /Connected From/ && is_input && match($0, /[0-9]+:[0-9]+/) {
            source = substr($0, RSTART, RLENGTH) }
        END { print name[source] }' /proc/asound/seq/clients
}
is_linked_to() { [ "$(linked_ports)" = "$1" ]; }
# The station has closed its input.
is_let_go() {
    ! awk -F'"' '/^Client/ { user = /User/ } /^ *Port/ && user { print $2 }' \
        /proc/asound/seq/clients | grep -q '^Zorvi\(_Control.*\)\?$'
}
