#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# The sound card is taken away in the middle of a run.
. "$(dirname "$0")/station.sh"

start_on_card
connect_unit
type_serial NOCARD
touch_bands 1 0 12
touch_bands 2 0 6
# It waits until the station lets go of the card, which may take until the station ends.
echo snd_aloop.0 > /sys/bus/platform/drivers/snd_aloop/unbind &
card_is_gone() { ! grep -q Loopback /proc/asound/cards; }
check 'the card is gone' wait_for card_is_gone
touch_bands 2 7 12
work_from 3
check 'the run goes on: the unit passes' has_passed NOCARD
check 'the notice comes and goes' close_notice
screenshot no-card
ps -L -o tid,comm,pcpu,time -p "$station"
