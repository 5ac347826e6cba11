#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# Runs the benchmarks of the release build and prints the table; "./dev bench" builds first.
#
#   run.sh [--compare FILE]   FILE: an earlier build/bench.json
#   run.sh --growth           how the cost grows instead
set -euo pipefail
compare='' growth=''
if [ "${1:-}" = --growth ] && [ $# = 1 ]; then
    growth=yes
elif [ "${1:-}" = --compare ]; then
    [ -f "${2:-}" ] || { echo "run.sh: --compare needs the JSON of an earlier run" >&2; exit 2; }
    compare=$(readlink -f "$2")
elif [ $# -gt 0 ]; then
    echo "run.sh: unknown option: $1" >&2
    exit 2
fi
cd "$(dirname "$(readlink -f "$0")")/.."
[ -n "${DISPLAY:-}" ] || exec xvfb-run -a -s '-screen 0 1280x800x24' benchmarks/run.sh "$@"

binaries=build/release/benchmarks
parts=$(mktemp -d)
trap 'rm -rf "$parts"' EXIT
# The earlier run may be the one that is about to be replaced.
[ -z "$compare" ] || cp "$compare" "$parts/before.json"

measure() { # where the result goes, the rows, then what is measured how often
    local command=() name=$1 rows=$2
    # On one core, so that it does not matter which one the other thread or the X server happens to
    # be on; but whole processes, and what zorvi_yield does, as they come.
    [ "$name" = processes ] || command=(taskset -c $(($(nproc) - 1)))
    QT_QPA_PLATFORM=xcb "${command[@]}" $binaries/zorvi_benchmarks --benchmark_filter="$rows" \
        "${@:3}" --benchmark_out_format=json --benchmark_out="$parts/$name.json" \
        > build/bench.log 2>&1 || { tail build/bench.log >&2; exit 1; }
}
if [ -n "$growth" ]; then
    measure growth '^growth'
    find $binaries/Logs -type f -delete
    benchmarks/table.py build/growth.json "$parts/growth.json"
    exit
fi

# Many short repetitions in random order: whatever else the machine does hits both sides of a row.
short=(--benchmark_repetitions=40 --benchmark_min_time=0.02
    --benchmark_enable_random_interleaving=true)
results=build/bench.json
measure station '-^growth|^process start|^idle|^log read|^report' "${short[@]}"
measure processes '^process start|^idle|^log read|^report' "${short[@]}"
benchmarks/table.py "$results" "$parts"/{station,processes}.json
[ -z "$compare" ] ||
    /usr/bin/python3 /usr/share/benchmark/compare.py --no-color --display_aggregates_only \
        benchmarks "$parts/before.json" "$results"
