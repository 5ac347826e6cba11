#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# The test of the package where it is installed, see test_package.sh: upgrade from the version before
# under its running service, debian/tests, removal, purge. Nothing that users made may go, nothing of
# the package may stay.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/../.."
application=/opt/zorvi-assembly-test
state=/var/lib/zorvi-yield

fail() {
    journalctl --no-pager -n 30 -u zorvi-yield >&2
    echo "in_container: $*" >&2
    exit 1
}

wait_for() { # a command that succeeds within a minute
    local _
    for _ in {1..120}; do
        ! "$@" || return 0
        sleep 0.5
    done
    fail "after a minute still not: $*"
}

# Each log: owner, permissions, bytes.
logs() {
    find $application/Logs -exec stat -c '%n %U:%G %a' {} + | sort
    find $application/Logs -type f -exec sha256sum {} + | sort
}

# Serial and date of each attempt in the database.
attempts() {
    $application/zorvi_yield export --format csv --database $state/attempts.sqlite |
        cut -d , -f 2,3 | sort
}

has_attempts() { [ "$(attempts | grep -c "\"$1\"")" = "$2" ]; } # serial, how many

same() { # what, before, after
    [ "$2" = "$3" ] || fail "$1 changed:
$(diff <(echo "$2") <(echo "$3"))"
}

make_users() {
    useradd -m -G audio early
    useradd -m -G audio late
    su early -c "umask 002; debian/tests/write_log EARLY 'Fri Nov 20 07:59:55 2026'"
    su late -c "umask 077; debian/tests/write_log LATE 'Fri Nov 20 08:59:55 2026'"
    chmod 440 $application/Logs/ZORVI_LATE.txt # closed to others, kept from the next test
    su late -c "echo 'ask Anna' > $application/Logs/notes.txt; mkdir $application/Logs/2025"
}

# Two tests of one unit while the database is locked: the former service keeps both in its spool.
in_spool() { [ "$(grep -rl "#$1" $state/spool | wc -l)" = "$2" ]; } # serial, how many
lock_database() {
    sqlite3 $state/attempts.sqlite 'BEGIN EXCLUSIVE' '.shell touch /tmp/locked; exec sleep 600' &
    locker=$!
    wait_for test -e /tmp/locked
    for test in 1 2; do
        debian/tests/write_log SPOOLED "Fri Nov 20 1$test:59:55 2026" $test
        wait_for in_spool SPOOLED $test
    done
}

upgrade() {
    local before after main
    systemctl enable --now zorvi-yield
    debian/tests/write_log BEFORE 'Fri Nov 20 09:59:55 2026'
    for serial in EARLY LATE BEFORE; do wait_for has_attempts $serial 1; done
    before=$(attempts) main=$(systemctl show -p MainPID --value zorvi-yield)
    lock_database
    after=$(logs)
    dpkg --unpack package.deb
    same "a log" "$after" "$(logs)"
    debian/tests/write_log MEANWHILE 'Fri Nov 20 13:59:55 2026'
    dpkg --configure -a
    pkill -P $locker
    [ "$(systemctl show -p MainPID --value zorvi-yield)" != "$main" ] ||
        fail "the former program still runs"
    systemctl is-active zorvi-yield
    systemctl is-enabled zorvi-yield
    wait_for has_attempts MEANWHILE 1
    wait_for has_attempts SPOOLED 2
    debian/tests/play_unit AFTER # the restarted station
    wait_for has_attempts AFTER 1
    compgen -G "$application/Logs/Outbox/Stored/*/*-1.txt" || fail "the outbox has not been used"
    same "the attempts" "$before" "$(attempts | grep -v -e SPOOLED -e MEANWHILE -e AFTER)"
    zorvi_yield status --database $state/attempts.sqlite $application/Logs || fail "status $?"
    systemctl disable --now zorvi-yield
    echo "in_container: upgraded under the running service"
}

remove_and_purge() {
    local before database left
    systemctl enable --now zorvi-yield zorvi-yield-report.timer
    debian/tests/write_log LAST 'Fri Nov 20 14:59:55 2026' none \
        $application/Logs/Outbox/20261120T145700.000-0123456789abcdef-1.txt
    wait_for test -e $application/Logs/Outbox/Stored/2026-11/20261120T145700.000-0123456789abcdef-1.txt
    has_attempts LAST 1
    before=$(logs) database=$(sha256sum $state/attempts.sqlite)
    apt-get remove -q -y zorvi-assembly-test
    ! pgrep -x zorvi_yield || fail "the collector still runs"
    apt-get purge -q -y zorvi-assembly-test
    same "a log" "$before" "$(logs)"
    same "the database" "$database" "$(sha256sum $state/attempts.sqlite)"
    left=$(find / -xdev -not -path '/installtest*' -not -path '/proc/*' -not -path '/home/*' \
        -not -path '/var/log/*' -not -path '/var/cache/*' -iname '*zorvi*' |
        grep -v -e "^$application\$" -e "^$application/Logs/" -e "^$state\$" -e "^$state/") || true
    [ -z "$left" ] || fail "left behind: $left"
    [ "$(ls $application)" = Logs ] || fail "left behind: $(ls $application)"
    echo "in_container: removed and purged; the logs and the database stayed"
}

make_users
upgrade
# This is the container that a test asks for; autopkgtest cannot know it of "null".
autopkgtest --no-built-binaries --ignore-restrictions=isolation-container . -- null
echo "in_container: debian/tests passed"
remove_and_purge
echo "in_container: done"
