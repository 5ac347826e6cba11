#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# usage: package.sh [--reproducible | --previous]
#
# Builds the Debian package for this machine's release from a copy of the files that git knows, in
# build/package/, and checks it. With --reproducible it is built twice more, with debrepro's
# variations, and the bytes are compared. With --previous the package of the version before is built
# instead, in build/previous/, from the last commit that had it.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
output=$PWD/build/package

fail() {
    echo "package: $*" >&2
    exit 1
}

say() { echo "package: $*"; }

# The version gets the release that it is for: 1.3.0~deb12.
export_source() { # into this folder
    mkdir -p "$1"
    git ls-files -z | tar -c --null -T - | tar -x -C "$1"
    # shellcheck source=/dev/null
    . /etc/os-release
    [ "$ID ${VERSION_ID:+known}" != 'debian known' ] ||
        sed -i "1s/($version) [a-z]*;/($version~deb$VERSION_ID) $VERSION_CODENAME;/" \
            "$1"/debian/{changelog,NEWS}
    # The dates of a checkout must not matter. Ninja would wait for one in the future to pass.
    [ "$(dpkg-parsechangelog -S Timestamp)" -lt "$(date +%s)" ] ||
        fail "debian/changelog has a date in the future"
    find "$1" -exec touch --no-dereference --date="$(dpkg-parsechangelog -S Date)" {} +
}

# debhelper gives the build a home of its own, where ccache would begin from nothing. ccache must not
# make paths relative, which changes what the debug symbols call a file.
build() { # in this folder; the packages come to the folder above it
    ! command -v ccache > /dev/null || CCACHE_DIR=$(ccache --get-config cache_dir)
    (cd "$1" && CCACHE_BASEDIR='' CCACHE_DIR=${CCACHE_DIR:-} dpkg-buildpackage -us -uc) \
        > "$1.log" 2>&1 || {
        tail -n 30 "$1.log" | cut -c 1-200 >&2
        fail "dpkg-buildpackage failed, see $1.log"
    }
}

build_previous() {
    local commit previous=build/previous version_before
    version_before=$(dpkg-parsechangelog --offset 1 --count 1 -S Version)
    ! compgen -G "$previous/zorvi-assembly-test_${version_before}_*.deb" > /dev/null || return 0
    commit=$(git log --format=%H -S"zorvi-assembly-test ($version)" -- debian/changelog | tail -n 1)
    rm -rf "$previous"
    mkdir -p "$previous/source"
    git archive "$commit^" | tar -x -C "$previous/source" ||
        fail "the history does not reach version $version_before"
    say "building $version_before, the log is $previous/source.log"
    build "$previous/source"
}

check() { # what was built in this folder
    local tree=$1/debian/zorvi-assembly-test
    desktop-file-validate packaging/*.desktop
    appstreamcli validate --no-net "$tree"/usr/share/metainfo/*.xml
    # An override may be of use for one release's lintian only, and another release may not know its
    # tag. The version of Debian's policy is that of the oldest release.
    lintian --allow-root --pedantic -I --fail-on error,warning,info,pedantic \
        --suppress-tags alien-tag,out-of-date-standards-version,unused-override \
        "${1%/*}"/zorvi-assembly-test_*.changes > "$output/lintian.txt" ||
        fail "lintian: $(cat "$output/lintian.txt")"
    # PIE is what Debian's compiler makes without being asked.
    blhc --bindnow "$1.log" > "$output/blhc.txt" || fail "not hardened, see build/package/blhc.txt"
    systemd-analyze security --offline=true --root="$tree" --threshold=15 --no-pager \
        zorvi-yield.service zorvi-yield-report.service > "$output/exposure.txt" ||
        fail "a service is exposed, see build/package/exposure.txt"
}

# debrepro varies user, umask, locale, time zone, time and path; the folder is another one too.
check_reproducibility() {
    (cd "$output" && sha256sum -- *.deb > checksums)
    CCACHE_DISABLE=1 debrepro -B "dpkg-buildpackage -b -us -uc &&
        (cd .. && sha256sum --check --quiet $output/checksums)" "$output/source" \
        > "$output/reproducible.log" 2>&1 ||
        fail "not reproducible, see build/package/reproducible.log"
}

version=$(dpkg-parsechangelog -S Version)
case ${1:-} in
    '' | --reproducible) ;;
    --previous)
        build_previous
        exit
        ;;
    *) fail "unexpected argument \"$1\"; usage: ./dev package [--reproducible]" ;;
esac
rm -rf "$output"
say "building $version, the log is build/package/source.log"
export_source "$output/source"
build "$output/source"
say "checking"
check "$output/source"
if [ "${1:-}" = --reproducible ]; then
    say "building twice again, to compare"
    check_reproducibility
fi
ls "$output"/*.deb
