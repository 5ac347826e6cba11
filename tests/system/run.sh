#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# usage: run.sh [--kernel SUITE] [--kvm] [--group NUMBERS] [--debian SUITE]
#
# Boots a Debian kernel in QEMU and runs guest.sh there. The root file system of that machine is
# this one's, read-only below an overlay in memory; it has no network. Screenshots and logs come to
# build/system/.
set -euo pipefail
here=$(dirname "$(readlink -f "$0")")
project=$(readlink -f "$here/../..")
system=$project/build/system
longest=1800 # seconds, for a busy machine; it takes less than half of that

fail() {
    echo "system: $*" >&2
    exit 1
}

suite=$(sed -n s/^VERSION_CODENAME=//p /etc/os-release) group='' tree=''
processor=(-accel tcg -cpu max -smp 2)
while [ $# -gt 0 ]; do
    case "$1" in
        --kernel) suite=${2:?--kernel takes a suite} && shift ;;
        --group) group=${2:?--group takes numbers} && shift ;;
        --debian) tree=$project/build/debian/${2:?--debian takes a suite} && shift ;;
        --kvm) processor=(-accel kvm -cpu host -smp 2) ;;
        *) fail "unexpected argument \"$1\"; usage: ./dev system [--kernel SUITE] [--kvm] [--group NUMBERS] [--debian SUITE]" ;;
    esac
    shift
done
[ "${processor[1]}" != kvm ] || [ -w /dev/kvm ] || fail "/dev/kvm is not there or not writable"
[ -x "$project/build/release/bin/zorvi_assembly_test" ] || fail "no station in build/release/bin"
[ -z "$tree" ] || [ -x "$tree/station/build/release/bin/zorvi_assembly_test" ] ||
    fail "no station in $tree; \"./dev test-on ${tree##*/} build\" makes it"

# The kernel and its modules, not installed.
kernel=$system/kernel-$suite
if [ ! -d "$kernel" ]; then
    . "$project/packaging/installtest/chroot.sh"
    make_chroot "$suite" "$kernel.new" --variant=extract --include=linux-image-amd64
    mkdir -p "$kernel.new/lib"
    # From Debian 13 on the modules are in /usr/lib.
    [ -d "$kernel.new/lib/modules" ] || ln -s ../usr/lib/modules "$kernel.new/lib/"
    /sbin/depmod -b "$kernel.new" "$(ls "$kernel.new/lib/modules")"
    rmdir "$kernel.new.packages"
    mv "$kernel.new" "$kernel"
fi
release=$(ls "$kernel/lib/modules")

[[ -n $group && $group != *8* ]] || "$here/desktop.sh" "$system/desktop${tree:+-${tree##*/}}" "$tree"

output=$system/output
rm -rf "$output" "$system/initramfs"
mkdir -p "$output" "$system/initramfs/modules"
qemu=''
cleanup() {
    [ -z "$qemu" ] || kill "$qemu" 2>/dev/null || true
    rm -rf "$system/initramfs" "$system/initramfs.img" "${disks:-}"
}
trap cleanup EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP

# What init needs to reach the root file system, in the order in which it is to be loaded.
mapfile -t modules < <(/sbin/modprobe -d "$kernel" -S "$release" -a --show-depends \
    virtio_pci 9pnet_virtio 9p overlay | awk '$1 == "insmod" && !seen[$2]++ { print $2 }')
for i in "${!modules[@]}"; do
    xz -dcf "${modules[i]}" > "$system/initramfs/modules/$((10 + i)).ko" # copies what is not compressed
done
cp "$here/init" /bin/busybox "$system/initramfs/"
printf '%s\n' "$project" "$group" "$tree" > "$system/initramfs/project"
(cd "$system/initramfs" && find . | busybox cpio -o -H newc 2>/dev/null | gzip -1) > "$system/initramfs.img"

# Disks for the power cuts, as QEMU records their writes. powercut.py also needs each as it is now.
disks=$output/disks drives=()
mkdir "$disks"
for name in {ext4,xfs}{,-unflushed}; do
    image=$disks/$name.image
    truncate -s 300M "$image"
    "/sbin/mkfs.${name%-*}" -q "$image"
    truncate -s +1M "$image" # the marks' place
    cp --sparse=always "$image" "$disks/$name.base"
    : > "$disks/$name.writes"
    files=file.driver=file,file.filename=$image,log.driver=file,log.filename=$disks/$name.writes
    drives+=(-blockdev "driver=blklogwrites,node-name=$name,${files}")
    drives+=(-device "virtio-blk-pci,drive=$name,serial=$name")
done

echo "system: booting Linux $release, ${processor[1]}"
# The first serial port is the console, the second what guest.sh prints.
timeout "$longest" qemu-system-x86_64 "${processor[@]}" -m 2G \
    -nodefaults -no-reboot -display none -nic none \
    -kernel "$kernel/boot/vmlinuz-$release" -initrd "$system/initramfs.img" \
    -append "console=ttyS0 quiet panic=-1" \
    -serial "file:$system/console.log" -serial stdio \
    -virtfs "local,path=/,mount_tag=root,security_model=none,readonly=on,multidevs=remap" \
    -virtfs "local,path=$output,mount_tag=output,security_model=none" "${drives[@]}" \
    < /dev/null > >(tee "$system/results.txt") &
qemu=$!
status=0
wait "$qemu" || status=$?
qemu=''
sleep 1 # for the last lines to come through tee

passed=$(grep -c '^ok ' "$system/results.txt" || true)
failed=$(grep -c '^FAILED ' "$system/results.txt" || true)
if ! grep -qx 'end of system tests' "$system/results.txt"; then
    echo "FAILED the machine ended early (status $status), see build/system/console.log"
    failed=$((failed + 1))
fi
echo "$passed passed, $failed failed"
[ "$failed" = 0 ]
