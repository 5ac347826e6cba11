#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# usage: package.sh [--reproducible]
#
# Builds the Debian package for this machine's release from a copy of the files that git knows, in
# build/package/, and checks it. The checkout stays as it is. With --reproducible it builds a second
# time, otherwise in every way that must not matter, and compares the bytes.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
output=$PWD/build/package

fail() {
    echo "package: $*" >&2
    exit 1
}

say() { echo "package: $*"; }

# The version, with the release that it is for: 1.2.0~deb12.
read_version() {
    local in_cmake in_metainfo
    version=$(dpkg-parsechangelog -S Version)
    in_cmake=$(sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
    in_metainfo=$(sed -n '/<release version/{s/.*version="\([^"]*\)".*/\1/p;q}' packaging/*.metainfo.xml.in)
    [ "$version $version" = "$in_cmake $in_metainfo" ] ||
        fail "version $version in debian/changelog, $in_cmake in CMakeLists.txt," \
            "$in_metainfo in the metainfo"
    suite=unstable
    # shellcheck source=/dev/null
    . /etc/os-release
    if [ "${ID:-}" = debian ] && [ -n "${VERSION_ID:-}" ]; then
        version=$version~deb$VERSION_ID
        suite=$VERSION_CODENAME
    fi
}

export_source() { # into this folder
    rm -rf "$1"
    mkdir -p "$1"
    git ls-files -z | tar -c --null -T - | tar -x -C "$1"
    sed -i "1s/(${version%~*}) [a-z]*;/($version) $suite;/" "$1"/debian/{changelog,NEWS}
    # The day of a checkout is nobody's business.
    find "$1" -exec touch --no-dereference --date="$(dpkg-parsechangelog -S Date)" {} +
}

# debhelper gives the build a home of its own, where ccache would begin from nothing. It must not
# make paths relative, which changes what the debug symbols call a file.
keep_ccache() {
    command -v ccache > /dev/null || return 0
    CCACHE_DIR=$(ccache --get-config cache_dir)
    export CCACHE_DIR CCACHE_BASEDIR=
}

build() { # in this folder; the packages, that of the source too, come to the folder above it
    (cd "$1" && keep_ccache && dpkg-buildpackage -us -uc) > "$1.log" 2>&1 || {
        tail -n 30 "$1.log" | cut -c 1-200 >&2
        fail "dpkg-buildpackage failed, see $1.log"
    }
}

# Down to the pedantic tags. An override may be of use for one release's lintian only, and another
# release may not know its tag. The version of Debian's policy is that of the oldest release.
check_with_lintian() { # the .changes
    lintian --allow-root --pedantic -I --fail-on error,warning,pedantic \
        --suppress-tags alien-tag,out-of-date-standards-version \
        "$1" > "$output/lintian.txt" || fail "lintian: $(cat "$output/lintian.txt")"
    ! grep '^I:' "$output/lintian.txt" | grep -v unused-override || fail "lintian, see above"
}

# What hardening=+all promises, in each program. Debian 12's own start-up code is not marked for
# control-flow protection, so its linker marks no program. Whether a program has fortified functions
# depends on what it calls; blhc looks at the flags.
check_hardening() { # the installed tree
    local program ignored=(--nocfprotection --nofortify)
    # Debian 13's asks every processor for what ARM has.
    ! grep -q nobranchprotection "$(command -v hardening-check)" || ignored+=(--nobranchprotection)
    for program in "$1"/opt/zorvi-assembly-test/zorvi_{assembly_test,unit,yield}; do
        hardening-check "${ignored[@]}" "$program" > "$output/hardening.txt" ||
            fail "not hardened: $(cat "$output/hardening.txt")"
    done
}

check_services() { # the installed tree
    local service
    for service in zorvi-yield zorvi-yield-report; do
        systemd-analyze security --offline=true --root="$1" --threshold=15 --no-pager \
            "$service.service" > "$output/exposure.txt" ||
            fail "$service is exposed: $(tail -n 1 "$output/exposure.txt")"
    done
}

check() { # what was built in this folder
    local tree=$1/debian/zorvi-assembly-test
    desktop-file-validate packaging/*.desktop
    appstreamcli validate --no-net "$tree"/usr/share/metainfo/*.xml
    check_with_lintian "${1%/*}"/zorvi-assembly-test_*.changes
    # PIE is what Debian's compiler makes without being asked.
    blhc --bindnow "$1.log" > "$output/blhc.txt" || fail "not hardened, see build/package/blhc.txt"
    check_hardening "$tree"
    check_services "$tree"
}

# The same again in another folder, without ccache, in another locale, time zone and umask; as root
# also as another user.
build_again() { # in this folder
    local as_other=() package
    export_source "$1"
    if [ "$(id -u)" = 0 ]; then
        chown -R nobody "${1%/*}" # where the packages come to
        as_other=(setpriv --reuid=nobody --regid=nogroup --clear-groups)
    fi
    # shellcheck disable=SC2016 # the inner shell's argument
    "${as_other[@]}" env -i PATH="$PATH" HOME=/nonexistent USER=other LC_ALL=C TZ=Asia/Kathmandu \
        CCACHE_DISABLE=1 sh -c 'umask 027 && cd "$1" && dpkg-buildpackage -b -us -uc' - "$1" \
        > "$1.log" 2>&1 || fail "the second build failed, see $1.log"
    for package in "$output"/*.deb; do
        cmp "$package" "${1%/*}/${package##*/}" || fail "${package##*/} is not reproducible"
    done
}

case ${1:-} in
    '' | --reproducible) ;;
    *) fail "unexpected argument \"$1\"; usage: ./dev package [--reproducible]" ;;
esac
read_version
rm -rf "$output"
say "building $version, the log is build/package/source.log"
export_source "$output/source"
build "$output/source"
say "checking"
check "$output/source"
if [ "${1:-}" = --reproducible ]; then
    say "building again, to compare"
    build_again "$output/another/longer/place/source"
    say "reproducible: the same bytes"
fi
ls "$output"/*.deb
