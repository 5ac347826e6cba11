#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# usage: run.sh [--kernel VERSION] [--kvm] [--group NUMBERS] [--debian SUITE]
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

kernel='' group='' tree=''
processor=(-accel tcg -cpu max -smp 2)
while [ $# -gt 0 ]; do
    case "$1" in
        --kernel) kernel=${2:?--kernel takes a version} && shift ;;
        --group) group=${2:?--group takes numbers} && shift ;;
        --debian) tree=$project/build/debian/${2:?--debian takes a suite} && shift ;;
        --kvm) processor=(-accel kvm -cpu host -smp 2) ;;
        *) fail "unexpected argument \"$1\"; usage: ./dev system [--kernel VERSION] [--kvm] [--group NUMBERS] [--debian SUITE]" ;;
    esac
    shift
done
[ "${processor[1]}" != kvm ] || [ -w /dev/kvm ] || fail "/dev/kvm is not there or not writable"
[ -x "$project/build/release/bin/zorvi_assembly_test" ] || fail "no station in build/release/bin"
[ -z "$tree" ] || [ -x "$tree/station/build/release/bin/zorvi_assembly_test" ] ||
    fail "no station in $tree; \"./dev test-on ${tree##*/} build\" makes it"

linux=$system/linux-${kernel:-$(sed -n s/^VERSION_CODENAME=//p /etc/os-release)}
"$here/kernel.sh" "$linux" "$kernel"

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
count=10
for module in virtio_pci 9pnet_virtio 9p overlay; do
    while read -r command file _; do
        [ "$command" = insmod ] || continue # else it is built in
        name=${file##*/}
        [ -z "$(find "$system/initramfs/modules" -name "*-${name%%.ko*}.ko")" ] || continue
        target=$system/initramfs/modules/$count-${name%%.ko*}.ko
        case "$name" in
            *.xz) xz -dc "$file" > "$target" ;;
            *) cp "$file" "$target" ;;
        esac
        count=$((count + 1))
    done < <(/sbin/modprobe -d "$linux" -S "$(cat "$linux/release")" --show-depends "$module")
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

echo "system: booting Linux $(cat "$linux/release"), ${processor[1]}"
# The first serial port is the console, the second what guest.sh prints.
timeout "$longest" qemu-system-x86_64 "${processor[@]}" -m 2G \
    -nodefaults -no-reboot -display none -nic none \
    -kernel "$linux/vmlinuz" -initrd "$system/initramfs.img" \
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
