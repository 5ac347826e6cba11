#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# usage: desktop.sh FOLDER [CHROOT]
#
# Unpacks the desktop's sound servers of this machine's release, or of the chroot's, into FOLDER.
# They are not installed: pipewire-alsa conflicts with pulseaudio, which other tests need. Does
# nothing if FOLDER holds them.
set -euo pipefail
folder=$1 root=${2:-/}

[ ! -d "$folder" ] || exit 0
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/lists/partial" "$work/archives/partial" "$work/files"
apt=(-qq -y -o "Dir=$root" -o "Dir::State::lists=$work/lists" -o "Dir::Cache::archives=$work/archives"
    -o Debug::NoLocking=1 -o APT::Sandbox::User=root)
echo 'desktop.sh: fetching PipeWire and WirePlumber'
apt-get "${apt[@]}" update
apt-get "${apt[@]}" install --no-install-recommends --download-only \
    dbus-daemon pipewire pipewire-alsa pipewire-pulse udev wireplumber
for package in "$work"/archives/*.deb; do
    dpkg-deb --fsys-tarfile "$package" | tar -x -C "$work/files"
done
mv "$work/files" "$folder"
