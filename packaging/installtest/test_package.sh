#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# usage: test_package.sh SUITE PREVIOUS.deb PACKAGE.deb   (as root)
#
# Installs PREVIOUS into a fresh chroot of that suite, build/debian/package, boots that in a container
# without the network, and runs in_container.sh there: upgrade to PACKAGE, debian/tests, removal and
# purge.
set -euo pipefail
suite=$1 previous=$2 package=$3
cd "$(dirname "$(readlink -f "$0")")/../.."
# shellcheck source=packaging/installtest/chroot.sh
. packaging/installtest/chroot.sh
root=build/debian/package test=build/debian/package/installtest

make_chroot "$suite" "$root"
mkdir "$test"
git ls-files -z debian packaging tests sequencer panels unit | tar -c --null -T - | tar -x -C "$test"
cp "$previous" "$test/previous.deb"
cp "$package" "$test/package.deb"
# The package and its tests get what they need before the network is gone.
needs=$(sed -n 's/^Depends: @, //p' debian/tests/control | paste -s -d ,)
in_chroot "$root" sh -c "apt-get update -q && apt-get satisfy -q -y --no-install-recommends \
    '$needs, $(dpkg-deb -f "$package" Depends), $(dpkg-deb -f "$package" Recommends), \
    autopkgtest, dbus, dpkg-dev, sqlite3, systemd-sysv' &&
    apt-get install -q -y --no-install-recommends /installtest/previous.deb &&
    systemctl enable /installtest/packaging/installtest/installtest.service"
status=0
timeout 900 systemd-nspawn --quiet --directory="$root" --machine=zorvi-installtest \
    --private-network --register=no --keep-unit --boot < /dev/null > "$test/console" 2>&1 || status=$?
cat "$test/output"
if [ "$status" != 0 ] || ! tail -n 1 "$test/output" | grep -qx 'in_container: done'; then
    echo "test_package.sh: failed, status $status; the chroot is $root, see installtest/console" >&2
    exit 1
fi
rm -rf --one-file-system "$root"
