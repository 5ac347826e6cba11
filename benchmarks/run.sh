#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# Runs the benchmarks of the release build and prints the table; "./dev bench" builds first.
#
#   run.sh [--compare FILE]   FILE: an earlier build/bench.json
set -euo pipefail
compare=
if [ "${1:-}" = --compare ]; then
    [ -f "${2:-}" ] || { echo "run.sh: --compare needs the JSON of an earlier run" >&2; exit 2; }
    compare=$(readlink -f "$2")
elif [ $# -gt 0 ]; then
    echo "run.sh: what is $1?" >&2
    exit 2
fi
cd "$(dirname "$(readlink -f "$0")")/.."
[ -n "${DISPLAY:-}" ] || exec xvfb-run -a -s '-screen 0 1280x800x24' benchmarks/run.sh "$@"

results=build/bench.json
parts=$(mktemp -d)
trap 'rm -rf "$parts"' EXIT
# The earlier run may be the one that is about to be replaced.
[ -z "$compare" ] || cp "$compare" "$parts/before.json"

# Many short repetitions in random order: whatever else the machine does hits both sides of a row.
measure() { # program, where its result goes
    QT_QPA_PLATFORM=xcb "$1" --benchmark_repetitions=40 --benchmark_min_time=0.02 \
        --benchmark_enable_random_interleaving=true --benchmark_out_format=json \
        --benchmark_out="$parts/$2.json" > build/bench.log 2>&1 ||
        { tail build/bench.log >&2; exit 1; }
}
measure build/release/benchmarks/zorvi_benchmarks station
measure build/release/benchmarks/audio/zorvi_audio_benchmarks audio
benchmarks/table.py "$results" "$parts/station.json" "$parts/audio.json"
[ -z "$compare" ] ||
    /usr/bin/python3 /usr/share/benchmark/compare.py --no-color --display_aggregates_only \
        benchmarks "$parts/before.json" "$results"
