#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# Makes the pictures of the documents from runs of the demos (release build, under Xvfb). No screen
# is needed.
set -euo pipefail
cd "$(dirname "$0")/.."
runs=$(mktemp -d)
trap 'rm -rf "$runs"' EXIT

run() { # folder, more options of the demo
    xvfb-run -a -s '-screen 0 1280x800x24' \
        build/release/bin/zorvi_demo --once --output "$runs/$1" "${@:2}" >/dev/null
}
run good
for moment in start middle; do
    convert "$runs/good/$moment.png" -strip "docs/pictures/$moment.png"
done
# What a fader looks like in each state.
convert "$runs/good/start.png" -crop 60x270+210+200 +repage -strip docs/pictures/fader-untested.png
convert "$runs/good/middle.png" -crop 60x270+390+200 +repage -strip docs/pictures/fader-under-test.png
convert "$runs/good/end.png" -crop 60x270+210+200 +repage -strip docs/pictures/fader-done.png

# The page of the simulated line.
build/release/bin/zorvi_line_demo --output "$runs" >/dev/null
chromium --headless --no-sandbox --disable-gpu --no-first-run --hide-scrollbars \
    --user-data-dir="$runs/profile" --window-size=1230,1690 --screenshot="$runs/yield.png" \
    "file://$runs/yield.html" 2>/dev/null
convert "$runs/yield.png" -strip +dither -colors 200 docs/pictures/yield.png
