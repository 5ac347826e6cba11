#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# The tryout of the package where it is installed, see try_package.sh: upgrade while the import runs,
# debian/tests, remove, purge. Nothing that people made may go, nothing of the package may stay.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/../.."
application=/opt/zorvi-assembly-test
state=/var/lib/zorvi-yield

fail() {
    echo "in_container: $*" >&2
    exit 1
}

say() { echo "in_container: $*"; }

# Each log: owner, rights, bytes.
logs() {
    find $application/Logs -exec stat -c '%n %U:%G %a' {} + | sort
    find $application/Logs -type f -exec sha256sum {} + | sort
}

# Serial and date of each attempt in the database.
attempts() {
    $application/zorvi_yield export --format csv --database $state/attempts.sqlite |
        cut -d , -f 2,3 | sort
}

wait_for_attempt() { # serial
    local _
    for _ in {1..120}; do
        ! attempts | grep -q "\"$1\"" || return 0
        sleep 0.5
    done
    fail "the import has not stored $1 after a minute"
}

same() { # what, before, after
    [ "$2" = "$3" ] || fail "$1 changed:
$(diff <(echo "$2") <(echo "$3"))"
}

make_people() {
    useradd -m -G audio early
    useradd -m -G audio late
    su early -c "umask 002; debian/tests/write_log EARLY 'Fri Nov 20 07:59:55 2026'"
    su late -c "umask 077; debian/tests/write_log LATE 'Fri Nov 20 08:59:55 2026'"
    chmod 440 $application/Logs/ZORVI_LATE.txt # closed to others, kept from the next test
    debian/tests/write_log ROOT 'Fri Nov 20 09:59:55 2026'
    su late -c "echo 'ask Anna' > $application/Logs/notes.txt; mkdir $application/Logs/2025"
}

upgrade() {
    local before after main
    systemctl enable --now zorvi-yield
    for serial in EARLY LATE ROOT; do wait_for_attempt $serial; done
    before=$(attempts) after=$(logs)
    main=$(systemctl show -p MainPID --value zorvi-yield)
    dpkg -i package.deb
    same "a log" "$after" "$(logs)"
    systemctl is-active zorvi-yield
    [ "$(systemctl show -p MainPID --value zorvi-yield)" != "$main" ] ||
        fail "the old program still runs"
    systemctl is-enabled zorvi-yield
    debian/tests/write_log AFTER 'Fri Nov 20 10:59:55 2026'
    wait_for_attempt AFTER
    same "the attempts" "$before" "$(attempts | grep -v AFTER)"
    systemctl disable --now zorvi-yield
    say "upgraded under a running import"
}

remove_and_purge() {
    local before database left
    systemctl enable --now zorvi-yield zorvi-yield-report.timer
    debian/tests/write_log LAST 'Fri Nov 20 11:59:55 2026'
    wait_for_attempt LAST
    before=$(logs) database=$(sha256sum $state/attempts.sqlite)
    apt-get remove -q -y zorvi-assembly-test
    ! pgrep -x zorvi_yield || fail "the import still runs"
    apt-get purge -q -y zorvi-assembly-test
    same "a log" "$before" "$(logs)"
    same "the database" "$database" "$(sha256sum $state/attempts.sqlite)"
    left=$(find / -xdev -not -path '/tryout*' -not -path '/proc/*' -not -path '/home/*' \
        -not -path '/var/log/*' -not -path '/var/cache/*' -iname '*zorvi*' |
        grep -v -e "^$application\$" -e "^$application/Logs/" -e "^$state\$" -e "^$state/") || true
    [ -z "$left" ] || fail "left behind: $left"
    [ "$(ls $application)" = Logs ] || fail "left behind: $(ls $application)"
    say "removed and purged; the logs and the database stayed"
}

make_people
upgrade
# This is the container that a test asks for; autopkgtest cannot know it of "null".
autopkgtest --no-built-binaries --ignore-restrictions=isolation-container . -- null
say "debian/tests passed"
remove_and_purge
say "done"
