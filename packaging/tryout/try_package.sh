#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# usage: try_package.sh PACKAGE.deb LIBRARY   (as root)
#
# Installs the package into a fresh Debian of this machine's release, in build/debian/package, starts
# the station there under Xvfb as an ordinary user of the group audio, has the preloaded LIBRARY play
# a unit's run against it, reads the log, and removes the package, which must leave the log.
set -euo pipefail
package=$(readlink -f "$1") library=$(readlink -f "$2")
self=$(readlink -f "$0")
cd "$(dirname "$self")/../.."
root=build/debian/package
application=/opt/zorvi-assembly-test
log=$application/Logs/ZORVI_TRYOUT.txt

fail() {
    echo "try_package: $*" >&2
    exit 1
}
# shellcheck source=packaging/tryout/debian_root.sh
. packaging/tryout/debian_root.sh

if [ "${3:-}" != contained ]; then
    # shellcheck source=/dev/null
    suite=$(. /etc/os-release && echo "${VERSION_CODENAME:-}")
    [ -n "$suite" ] || fail "/etc/os-release does not name this machine's release"
    contained "$self" "$package" "$library" contained "$suite"
    rm -rf --one-file-system "$root"
    exit
fi
make_root "$4"
mount_root

cp "$package" "$root/tmp/station.deb"
cp "$library" "$root/tmp/unit.so"
inside apt-get update -q
inside apt-get install -q -y --no-install-recommends \
    /tmp/station.deb xvfb xauth xdotool
inside useradd -m -G audio tester
inside useradd -m stranger
inside su stranger -c "ls $application/Logs" # may look, not write
inside su stranger -c "touch $application/Logs/x" && fail "a stranger can write logs"

cat > "$root/tmp/run.sh" <<RUN
cd \$HOME
LD_PRELOAD=/tmp/unit.so $application/zorvi_assembly_test &
station=\$!
window=\$(timeout 60 xdotool search --sync --name '0908 Zorvi Assembly Test' | head -n 1)
[ -n "\$window" ] || { echo "the station shows no window" >&2; exit 1; }
xdotool mousemove --window \$window 380 526 click 1 type TRYOUT
for _ in \$(seq 60); do [ -s $log ] && break; sleep 0.5; done
sleep 2
xdotool key Return # closes the notice
sleep 1
kill \$station
RUN
inside_offline su tester -c "xvfb-run -a -s '-screen 0 1280x800x24' bash /tmp/run.sh" || true

[ -s "$root$log" ] || fail "no log was written"
ls -ln "$root$log"
[ "$(stat -c %g "$root$log")" = "$(inside getent group audio | cut -d: -f3)" ] ||
    fail "the log does not belong to the group audio"
# By the installed program, as any user: it needs the database's driver from the dependencies.
said=$(inside su stranger -c "cd && zorvi_yield import --station tryout $application/Logs &&
    zorvi_yield unit TRYOUT") || true
echo "$said"
[[ $said == *'tryout  complete' ]] || fail "the log is not complete"
inside apt-get remove -q -y zorvi-assembly-test
[ -s "$root$log" ] || fail "removing the package took the log"
echo "try_package: installed, ran, logged, removed; the log stayed"
