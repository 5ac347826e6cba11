#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# Builds the package of version 1.1.0 for this machine's release, which people upgrade from, in
# build/previous/, unless it is there, and prints its path.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/../.."
commit=c8d5662 # the last one that makes the package with CPack
folder=$PWD/build/previous

if ! compgen -G "$folder/*.deb" > /dev/null; then
    rm -rf "$folder"
    mkdir -p "$folder/source"
    git archive $commit | tar -x -C "$folder/source"
    {
        cmake -G Ninja -S "$folder/source" -B "$folder/binary" -DCMAKE_BUILD_TYPE=Release \
            -DBUILD_TESTING=OFF -DCMAKE_SKIP_INSTALL_ALL_DEPENDENCY=ON
        cmake --build "$folder/binary" --target zorvi_assembly_test zorvi_unit zorvi_yield \
            zorvi_compressed_documents
        (cd "$folder/binary" && cpack -G DEB -B "$folder")
    } > "$folder/build.log" 2>&1 || {
        echo "previous_package: failed, see $folder/build.log" >&2
        exit 1
    }
fi
ls "$folder"/*.deb
