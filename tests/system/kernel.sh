#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# usage: kernel.sh FOLDER [VERSION]
#
# Puts a Debian kernel and its modules into FOLDER, without installing it: the one that this
# machine's release installs, or the newest one whose version begins with VERSION (6.12, say) in any
# of the releases below. Does nothing if FOLDER holds one.
set -euo pipefail
folder=$1 version=${2:-}
releases=(bookworm trixie forky)

fail() {
    echo "kernel.sh: $*" >&2
    exit 1
}

[ ! -f "$folder/vmlinuz" ] || exit 0
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The machine's own mirror, with a package list that the machine's apt never sees.
codename=$(sed -n s/^VERSION_CODENAME=//p /etc/os-release)
mkdir -p "$work/sources" "$work/lists/partial" "$work/cache/archives/partial"
for release in "${releases[@]}"; do
    [ -n "$version" ] || [ "$release" = "$codename" ] || continue
    for file in /etc/apt/sources.list /etc/apt/sources.list.d/debian.{list,sources}; do
        [ ! -f "$file" ] || sed "s/\b$codename\b/$release/g" "$file" > "$work/sources/$release-${file##*/}"
    done
done
apt=(-q -o Dir::Etc::SourceList=/dev/null -o "Dir::Etc::SourceParts=$work/sources"
    -o "Dir::State::Lists=$work/lists" -o "Dir::Cache=$work/cache" -o APT::Sandbox::User=root)
apt-get "${apt[@]}" update > "$work/update.log" 2>&1 || { cat "$work/update.log" >&2; fail "apt cannot update"; }

if [ -n "$version" ]; then
    package=$(apt-cache "${apt[@]}" pkgnames linux-image- |
        { grep -E "^linux-image-${version//./\\.}([.+~-][0-9.+a-z~-]*)?-amd64\$" || true; } |
        { grep -Ev -- '-(rt|cloud)-amd64$' || true; } | sort -V | tail -n 1)
else
    package=$(apt-cache "${apt[@]}" depends linux-image-amd64 | sed -n 's/^ *Depends: //p')
fi
[ -n "$package" ] || fail "no kernel ${version:-} in ${releases[*]}"
# From Debian 14 on the kernel and its modules are packages of their own.
mapfile -t parts < <(apt-cache "${apt[@]}" depends "$package" | sed -n 's/^ *Depends: //p' |
    { grep -E '^linux-(base|binary|modules)-[0-9]' || true; })
echo "kernel.sh: fetching $package"
(cd "$work" && apt-get "${apt[@]}" download "$package" "${parts[@]}")
rm -rf "$folder"
mkdir -p "$folder"
for file in "$work"/linux-*.deb; do dpkg-deb -x "$file" "$folder"; done
# From Debian 13 on the modules are in /usr/lib alone.
[ -d "$folder/lib" ] || ln -s usr/lib "$folder/lib"
ls "$folder/lib/modules" > "$folder/release"
/sbin/depmod -b "$folder" "$(cat "$folder/release")"
mv "$(find "$folder" -name 'vmlinuz*')" "$folder/vmlinuz"
