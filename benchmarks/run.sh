#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# Runs the benchmarks of the release build and prints the table; "./dev bench" builds first.
#
#   run.sh [--compare FILE]   FILE: an earlier build/bench.json
#   run.sh --growth           how the cost grows instead, and the pictures of it in docs/
set -euo pipefail
compare='' growth=''
if [ "${1:-}" = --growth ] && [ $# = 1 ]; then
    growth=yes
elif [ "${1:-}" = --compare ]; then
    [ -f "${2:-}" ] || { echo "run.sh: --compare needs the JSON of an earlier run" >&2; exit 2; }
    compare=$(readlink -f "$2")
elif [ $# -gt 0 ]; then
    echo "run.sh: what is $1?" >&2
    exit 2
fi
cd "$(dirname "$(readlink -f "$0")")/.."
[ -n "${DISPLAY:-}" ] || exec xvfb-run -a -s '-screen 0 1280x800x24' benchmarks/run.sh "$@"

binaries=build/release/benchmarks
if [ -n "$growth" ]; then
    find "$binaries/growth/Logs" -type f -delete
    QT_QPA_PLATFORM=xcb "$binaries/growth/zorvi_growth_benchmarks" --benchmark_out_format=json \
        --benchmark_out=build/growth.json 2> build/bench.log
    find "$binaries/growth/Logs" -type f -delete
    exec benchmarks/growth_pictures.py build/growth.json docs/pictures
fi

results=build/bench.json
parts=$(mktemp -d)
trap 'rm -rf "$parts"' EXIT
# The earlier run may be the one that is about to be replaced.
[ -z "$compare" ] || cp "$compare" "$parts/before.json"

# Many short repetitions in random order: whatever else the machine does hits both sides of a row.
measure() { # where the result goes, then the command
    QT_QPA_PLATFORM=xcb "${@:2}" --benchmark_repetitions=40 --benchmark_min_time=0.02 \
        --benchmark_enable_random_interleaving=true --benchmark_out_format=json \
        --benchmark_out="$parts/$1.json" > build/bench.log 2>&1 ||
        { tail build/bench.log >&2; exit 1; }
}
# On one core, so that it does not matter which one the other thread or the X server happens to be
# on; but whole processes as they come.
one_core=(taskset -c $(($(nproc) - 1)))
measure station "${one_core[@]}" $binaries/zorvi_benchmarks --benchmark_filter='-process start|idle'
measure audio "${one_core[@]}" $binaries/audio/zorvi_audio_benchmarks
measure processes $binaries/zorvi_benchmarks --benchmark_filter='process start|idle'
benchmarks/table.py "$results" "$parts"/{station,audio,processes}.json
[ -z "$compare" ] ||
    /usr/bin/python3 /usr/share/benchmark/compare.py --no-color --display_aggregates_only \
        benchmarks "$parts/before.json" "$results"
