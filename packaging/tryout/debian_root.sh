# shellcheck shell=bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# To be sourced, by scripts that run as root: a fresh Debian in the folder $root.
: "${root:?}"

# Runs a command with private mounts and processes: they end with it, and when this script is
# interrupted.
contained() {
    local child status=0
    unshare --mount --pid --mount-proc --fork --kill-child "$@" &
    child=$!
    # shellcheck disable=SC2064 # the number as it is now
    trap "kill -KILL $child" EXIT
    trap 'exit 130' INT
    trap 'exit 143' TERM HUP
    wait "$child" || status=$?
    trap - EXIT INT TERM HUP
    return $status
}

# The functions below are for what runs contained.

# Makes the Debian anew from the mirror that this machine's apt uses, otherwise from Debian's own.
# Packages that were loaded once are kept beside it.
make_root() { # suite
    local suite=$1 mirror script
    # shellcheck disable=SC2016 # apt-get fills in the address
    mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' 'Label: Debian' |
        sed -n 1p)
    # A release that this debootstrap does not know yet is made as sid is.
    script=/usr/share/debootstrap/scripts/$suite
    [ -e "$script" ] || script=/usr/share/debootstrap/scripts/sid
    [ ! -e "$root" ] || rm -rf --one-file-system "$root"
    mkdir -p "$root" "$root.packages"
    debootstrap --variant=minbase --cache-dir="$(readlink -f "$root.packages")" "$suite" "$root" \
        ${mirror:+"$mirror" "$script"}
    cp /etc/resolv.conf "$root/etc/"
    # How this machine reaches the mirror, a proxy for instance.
    apt-config dump | grep -E '^Acquire::(http|https|Check-.*)[: ]' \
        > "$root/etc/apt/apt.conf.d/90machine" || true
    # Nothing in it has to survive a power cut.
    echo force-unsafe-io > "$root/etc/dpkg/dpkg.cfg.d/fast"
}

# What programs in the Debian expect.
mount_root() {
    mount -t proc proc "$root/proc"
    mount -t tmpfs tmpfs "$root/dev/shm"
    mount --bind "$root.packages" "$root/var/cache/apt/archives"
    mknod -m 666 "$root/dev/fuse" c 10 229 # for bindfs
}

inside() {
    chroot "$root" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root \
        DEBIAN_FRONTEND=noninteractive "$@"
}

# The same without the network, which holds the X servers of this machine apart from those inside.
inside_offline() {
    export root
    export -f inside
    # shellcheck disable=SC2016 # the inner shell's arguments
    unshare --net bash -c 'ip link set lo up && inside "$@"' - "$@"
}
