#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
#   docs/draw_house.sh            draws docs/pictures/house.svg from CMake's own link graph
#   docs/draw_house.sh --check    fails if the links have changed since it was drawn
set -euo pipefail
cd "$(dirname "$0")/.."
drawing=docs/pictures/house.dot

# Prints "from to" for each link between the project's targets, and to Qt's modules.
links() {
    cmake -B build/house -G Ninja -DBUILD_TESTING=OFF -DZORVI_BENCHMARKS=OFF \
        --graphviz=build/house/links.dot >build/house.log
    sed -nE 's|.*// (zorvi_[a-z_]+) -> (zorvi_[a-z_]+\|Qt5::[A-Z][a-zA-Z]*)$|\1 \2|p' \
        build/house/links.dot | grep -vE 'zorvi_(options|resources)' | sort -u
}

# The folder whose CMakeLists.txt makes a target.
folder_of() {
    git grep -lE "add_(library|executable)\($1 " -- '*CMakeLists.txt' 'cmake/*.cmake' |
        sed -E 's|/[^/]*$||'
}

draw() {
    local from to target
    echo '// Made by docs/draw_house.sh from the link graph.'
    echo 'digraph house {'
    echo '    node [shape=box, style="rounded,filled", fillcolor="#dce6ff", fontname="DejaVu Sans", fontsize=11];'
    echo '    edge [color="#555555"];'
    while read -r from to; do
        echo "    \"$from\" -> \"$to\";"
    done <<<"$1"
    for target in $(tr ' ' '\n' <<<"$1" | sort -u); do
        case $target in
            Qt5::*) echo "    \"$target\" [fillcolor=\"#ffffff\"];" ;;
            *) printf '    "%s" [label="%s\\n%s/"];\n' "$target" "$target" "$(folder_of "$target")" ;;
        esac
    done
    echo '}'
}

mkdir -p build
drawn=$(draw "$(links)")
if [ "${1:-}" = --check ]; then
    diff <(echo "$drawn") "$drawing" >&2 || {
        echo "draw_house.sh: the links have changed; run docs/draw_house.sh" >&2
        exit 1
    }
    exit 0
fi
echo "$drawn" >"$drawing"
tred "$drawing" | dot -Tsvg -o "${drawing%.dot}.svg"
