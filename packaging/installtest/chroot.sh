# shellcheck shell=bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# To be sourced, by scripts that run as root.

# Makes a chroot of this suite in this folder, from the mirror that this machine's apt uses and in
# the way it reaches that. What is installed later is kept in FOLDER.packages for the next time.
make_chroot() { # suite, folder, options of mmdebstrap
    local suite=$1 root=$2 mirror
    # shellcheck disable=SC2016 # apt-get fills in the address
    mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' 'Label: Debian' |
        sed -n 1p)
    rm -rf --one-file-system "$root"
    mkdir -p "$root.packages"
    mmdebstrap --variant=minbase --include=ca-certificates --dpkgopt=force-unsafe-io \
        --aptopt="$(apt-config dump | grep -E '^Acquire::(http|https|Check-.*)[: ]')" \
        "${@:3}" "$suite" "$root" "${mirror:-http://deb.debian.org/debian}"
}

# Runs a command in a chroot. What it started ends with it.
in_chroot() { # folder, options of systemd-nspawn, command
    SYSTEMD_NSPAWN_TMPFS_TMP=0 systemd-nspawn --quiet --register=no --keep-unit --pipe --as-pid2 \
        --directory="$1" --bind="$(readlink -f "$1.packages"):/var/cache/apt/archives" \
        --bind=/dev/fuse --setenv=DEBIAN_FRONTEND=noninteractive "${@:2}" < /dev/null
}
