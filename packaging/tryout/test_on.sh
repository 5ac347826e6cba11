#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# usage: test_on.sh SUITE [COMMAND]   (as root)
#
# Clones HEAD into a fresh Debian of that suite in build/debian/SUITE and runs "./dev COMMAND" there:
# test, which is the default, lint, package, try-package, demo or build. The Debian is removed when
# that succeeded, and left to be looked at when not. "build" leaves it too, for "./dev system --debian
# SUITE". "try-package" builds its packages there and tries them in another fresh Debian of that suite.
set -euo pipefail
self=$(readlink -f "$0")
cd "$(dirname "$self")/../.."

fail() {
    echo "test-on: $*" >&2
    exit 1
}

suite=${1:-}
case "$suite" in
    bookworm | trixie | forky) ;;
    *) fail "which Debian? bookworm, trixie or forky" ;;
esac
command=${2:-test}
case "$command" in
    test | lint | package) groups="build $command" ;;
    try-package) groups='build package' ;;
    demo | build) groups=build ;;
    *) fail "which command? test, lint, package, try-package, demo or build" ;;
esac
[ "$suite $command" != 'forky try-package' ] ||
    fail "version 1.1.0, which try-package upgrades, does not compile with JUCE 9"
root=build/debian/$suite
# shellcheck source=packaging/tryout/debian_root.sh
. packaging/tryout/debian_root.sh

if [ "${3:-}" = contained ]; then
    echo "test-on: making a fresh $suite in $root"
    make_root "$suite"
    git clone -q . "$root/station"
    mount_root
    mkdir -p build/debian/ccache "$root/var/cache/ccache"
    mount --bind build/debian/ccache "$root/var/cache/ccache"
    start=$SECONDS
    inside sh -c "cd /station && ./dev setup $groups"
    echo "test-on: its packages took $((SECONDS - start)) s"
    build="./dev $command"
    [ "$command" != try-package ] || build='./dev package && packaging/tryout/previous_package.sh'
    inside_offline CCACHE_DIR=/var/cache/ccache sh -c "cd /station && $build"
    exit
fi

git diff --quiet HEAD || echo "test-on: what is not committed is not tested"
start=$SECONDS
contained "$self" "$suite" "$command" contained ||
    fail "$command failed on $suite after $((SECONDS - start)) s; what was built lies in $root/station"
[ "$command" != try-package ] || packaging/tryout/try_package.sh "$suite" \
    "$root"/station/build/{previous/*,package/zorvi-assembly-test_*}.deb
[ "$command" = build ] || rm -rf --one-file-system "$root"
echo "test-on: $command succeeded on $suite, $((SECONDS - start)) s"
