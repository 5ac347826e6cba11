#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# usage: try_package.sh SUITE PREVIOUS.deb PACKAGE.deb   (as root)
#
# Installs PREVIOUS into a fresh Debian of that suite, in build/debian/package, boots that in a
# container without the network, and has in_container.sh upgrade it to PACKAGE, run debian/tests there,
# remove and purge it.
set -euo pipefail
suite=$1 previous=$(readlink -f "$2") package=$(readlink -f "$3")
self=$(readlink -f "$0")
cd "$(dirname "$self")/../.."
root=build/debian/package

fail() {
    echo "try_package: $*" >&2
    exit 1
}
# shellcheck source=packaging/tryout/debian_root.sh
. packaging/tryout/debian_root.sh

if [ "${4:-}" != contained ]; then
    contained "$self" "$suite" "$previous" "$package" contained
    rm -rf --one-file-system "$root"
    exit
fi
make_root "$suite"
mount_root

# What the package and its tests need is there before the network is gone.
mkdir "$root/tryout"
git ls-files -z debian packaging tests sequencer panels unit | tar -c --null -T - |
    tar -x -C "$root/tryout"
cp "$previous" "$root/tryout/previous.deb"
cp "$package" "$root/tryout/package.deb"
needs=$(sed -n 's/^Depends: @, //p' debian/tests/control | paste -s -d ,)
inside apt-get update -q
inside apt-get install -q -y --no-install-recommends \
    /tryout/previous.deb autopkgtest dbus dpkg-dev systemd-sysv
inside apt-get satisfy -q -y --no-install-recommends \
    "$needs, $(dpkg-deb -f "$package" Depends), $(dpkg-deb -f "$package" Recommends)"
umount "$root/var/cache/apt/archives" "$root/dev/shm" "$root/proc"

cat > "$root/etc/systemd/system/tryout.service" <<'UNIT'
[Service]
Type=exec
WorkingDirectory=/tryout
ExecStart=/tryout/packaging/tryout/in_container.sh
StandardOutput=file:/tryout/output
StandardError=inherit
ExecStopPost=systemctl exit $EXIT_STATUS
UNIT
ln -s ../tryout.service "$root/etc/systemd/system/multi-user.target.wants/"
status=0
timeout 900 systemd-nspawn --quiet --directory="$root" --machine=zorvi-tryout --private-network \
    --register=no --keep-unit --boot < /dev/null > "$root/tryout/console" 2>&1 || status=$?
cat "$root/tryout/output"
[ "$status" = 0 ] || fail "status $status; the Debian is in $root, its console in tryout/console"
tail -n 1 "$root/tryout/output" | grep -qx 'in_container: done' || fail "it ended early"
