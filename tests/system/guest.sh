#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# usage: guest.sh ["GROUP..." [TREE]]
#
# Runs in the machine that run.sh boots, as its first process: prepares it, runs each group of
# tests, switches the machine off. TREE: the chroot whose station is tested.
export PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8
here=$(dirname "$(readlink -f "$0")")
project=$(readlink -f "$here/../..")
tree=${2:-}
export project tree

mount -t sysfs sys /sys
mount -t tmpfs run /run
rm -rf /tmp/.X* # screens of the other machine
mkdir -p /dev/pts /dev/shm /run/output
ln -s /proc/self/fd /dev/fd # a daemon usually does that
mount -t devpts pts /dev/pts
mount -t tmpfs shm /dev/shm
mount -t 9p -o trans=virtio,version=9p2000.L,msize=512000 output /run/output
mkdir -p /lib/modules
rm -rf "/lib/modules/$(uname -r)"
ln -s "$project/build/system/kernel-"*/lib/modules/"$(uname -r)" /lib/modules/
modprobe -a configfs snd-seq snd-seq-midi snd-usb-audio libcomposite usb_f_midi
modprobe dummy_hcd num=3 # controllers, so many units can be plugged in at once
mount -t configfs configfs /sys/kernel/config

if [ -n "$tree" ]; then
    for folder in dev proc run sys tmp; do
        mount --rbind "/$folder" "$tree/$folder"
    done
fi

exec 3> /dev/ttyS1 # for the results; everything else goes to the console
stty -F /dev/ttyS1 -opost
# The server writes the display's number once it accepts connections.
Xvfb -displayfd 4 -noreset -screen 0 1280x800x24 -nolisten tcp \
    4> /run/display > /run/output/xvfb.log 2>&1 &
while [ ! -s /run/display ] && kill -0 $!; do sleep 0.2; done
DISPLAY=:$(cat /run/display)
export DISPLAY
for number in ${1:-1 2 3 4 5 6 7 8}; do
    group=$(echo "$here/$number"-*.sh)
    name=$(basename "$group" .sh)
    echo "# $name, $(cut -d' ' -f1 /proc/uptime) s after the start" >&3
    bash "$group" > "/run/output/$name.log" 2>&1 ||
        echo "FAILED $name ended early with status $?" >&3
done
echo "# $(cut -d' ' -f1 /proc/uptime) s after the start" >&3
echo 'end of system tests' >&3
sleep 1
sync
echo o > /proc/sysrq-trigger
while true; do :; done # until it is off; the first process must not end
