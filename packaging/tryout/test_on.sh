#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# usage: test_on.sh SUITE   (as root)
#
# Clones HEAD into a fresh Debian of that suite in build/debian/SUITE and runs "./dev test" there.
# The Debian is removed when all tests passed, and left to be looked at when not.
set -euo pipefail
self=$(readlink -f "$0")
cd "$(dirname "$self")/../.."

fail() {
    echo "test-on: $*" >&2
    exit 1
}

suite=${1:-}
case "$suite" in
    bookworm | trixie) ;;
    *) fail "which Debian? bookworm or trixie" ;;
esac
root=build/debian/$suite
# shellcheck source=packaging/tryout/debian_root.sh
. packaging/tryout/debian_root.sh

if [ "${2:-}" = contained ]; then
    echo "test-on: making a fresh $suite in $root"
    make_root "$suite"
    git clone -q . "$root/station"
    mount_root
    mkdir -p build/debian/ccache "$root/var/cache/ccache"
    mount --bind build/debian/ccache "$root/var/cache/ccache"
    inside sh -c 'cd /station && ./dev setup build test'
    inside_offline CCACHE_DIR=/var/cache/ccache sh -c 'cd /station && ./dev test'
    exit
fi

git diff --quiet HEAD || echo "test-on: what is not committed is not tested"
start=$SECONDS
contained "$self" "$suite" contained ||
    fail "failed on $suite after $((SECONDS - start)) s; what was built lies in $root/station"
rm -rf --one-file-system "$root"
echo "test-on: all tests passed on $suite, $((SECONDS - start)) s"
