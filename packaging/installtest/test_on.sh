#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# usage: test_on.sh SUITE [COMMAND]   (as root)
#
# Clones HEAD into a fresh chroot of that suite, build/debian/SUITE, and runs "./dev COMMAND" there:
# test, which is the default, lint, package, test-package, demo or build. The chroot is removed when
# that succeeded. "build" leaves it, for "./dev system --debian SUITE". "test-package" builds its
# packages there and tests them in a container of that suite.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/../.."
# shellcheck source=packaging/installtest/chroot.sh
. packaging/installtest/chroot.sh

fail() {
    echo "test-on: $*" >&2
    exit 1
}

suite=${1:-} command=${2:-test} root=build/debian/${1:-}
case $suite in
    bookworm | trixie | forky) ;;
    *) fail "SUITE is bookworm, trixie or forky" ;;
esac
run="./dev $command"
case $command in
    test | lint | package) groups="build $command" ;;
    test-package) groups='build package' run='./dev package && packaging/package.sh --previous' ;;
    demo | build) groups=build ;;
    *) fail "COMMAND is test, lint, package, test-package, demo or build" ;;
esac
git diff --quiet HEAD || echo "test-on: what is not committed is not tested"

echo "test-on: making a fresh $suite in $root"
make_chroot "$suite" "$root"
git clone -q . "$root/station"
in_chroot "$root" sh -c "cd /station && ./dev setup $groups"
mkdir -p build/debian/ccache
start=$SECONDS
# Without the network, which separates the X servers of this machine from those inside.
in_chroot "$root" --private-network --bind="$PWD/build/debian/ccache:/var/cache/ccache" \
    --setenv=CCACHE_DIR=/var/cache/ccache sh -c "cd /station && $run" ||
    fail "$command failed on $suite; what was built lies in $root/station"
[ "$command" != test-package ] || packaging/installtest/test_package.sh "$suite" \
    "$root"/station/build/{previous,package}/zorvi-assembly-test_*.deb
[ "$command" = build ] || rm -rf --one-file-system "$root"
echo "test-on: $command succeeded on $suite, $((SECONDS - start)) s without the setup"
