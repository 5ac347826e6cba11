#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
#   docs/draw_house.sh            draws docs/pictures/house.svg from CMake's own link graph
#   docs/draw_house.sh --check    fails if the links have changed since it was drawn
set -euo pipefail
cd "$(dirname "$0")/.."
export LC_ALL=C # one order for all who draw it
drawing=docs/pictures/house.dot

# Prints "from to" for each link between the project's targets, and to Qt's modules.
links() {
    cmake -B build/house -G Ninja -DBUILD_TESTING=OFF -DZORVI_BENCHMARKS=OFF \
        --graphviz=build/house/links.dot >build/house.log
    sed -nE 's|.*// (zorvi_[a-z_]+) -> (zorvi_[a-z_]+\|Qt5::[A-Z][a-zA-Z]*)$|\1 \2|p' \
        build/house/links.dot | grep -vE 'zorvi_(options|resources)' | sort -u
}

# The folder whose CMakeLists.txt makes a target; a module of Qt stands for itself.
folder_of() {
    case $1 in
        Qt5::*) echo "$1" ;;
        *) git grep -lE "add_(library|executable)\($1 " -- '*CMakeLists.txt' 'cmake/*.cmake' |
            sed -E 's|[^/]*$||' ;;
    esac
}

draw() {
    local from to target
    local -A folder=() targets=()
    for target in $(tr ' ' '\n' <<<"$1" | sort -u); do
        folder[$target]=$(folder_of "$target")
        [ -n "${folder[$target]}" ] || {
            echo "draw_house.sh: no file known to git makes $target" >&2
            exit 1
        }
        targets[${folder[$target]}]+="\\n$target"
    done
    echo '// Made by docs/draw_house.sh from the link graph: a box for each folder with what it makes.'
    echo 'digraph house {'
    echo '    node [shape=box, style="rounded,filled", fillcolor="#dce6ff", fontname="DejaVu Sans", fontsize=11];'
    echo '    edge [color="#555555"];'
    while read -r from to; do
        [ "${folder[$from]}" = "${folder[$to]}" ] ||
            echo "    \"${folder[$from]}\" -> \"${folder[$to]}\";"
    done <<<"$1" | sort -u
    for target in "${!targets[@]}"; do
        case $target in
            Qt5::*) echo "    \"$target\" [fillcolor=\"#ffffff\"];" ;;
            yield/*) echo "    \"$target\" [fillcolor=\"#d9f0dd\", label=\"$target${targets[$target]}\"];" ;;
            *) echo "    \"$target\" [label=\"$target${targets[$target]}\"];" ;;
        esac
    done | sort
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
