#!/usr/bin/env bash
# Usage: enter.sh ROOT COMMAND...
#        enter.sh --possible
#
# Runs COMMAND as root on the system in the folder ROOT, without a network, in namespaces that end
# with it. Takes no root where users may make namespaces. With --possible runs nothing: where the
# machine forbids namespaces it says so and ends with status 77.
set -euo pipefail

# Runs COMMAND $2... as enter.sh does, on the system in $1.
in_namespaces() {
    # shellcheck disable=SC2016  # for the inner shell
    env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 TERM=dumb \
        unshare "${as_user[@]}" --mount --pid --net --ipc --uts --fork --kill-child bash -c '
            mount --rbind "$1" "$1" && mount -t proc proc "$1/proc" &&
            mount --rbind /dev "$1/dev" && exec chroot "$@"' - "$@"
}

# Finds out whether it takes a user namespace, where even root may be without rights, or goes
# without. The machine itself serves as the system.
choose_way() {
    local reason other
    as_user=(--user --map-root-user)
    reason=$(in_namespaces / true 2>&1) && return
    as_user=()
    other=$(in_namespaces / true 2>&1) && return
    printf '%s\n' 'skipped: no system within the system can be entered here' "$reason" "$other"
    exit 77
}

choose_way
[ "$1" = --possible ] || in_namespaces "$@"
