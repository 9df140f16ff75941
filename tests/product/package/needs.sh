#!/usr/bin/env bash
# Usage: needs.sh LIBRARIES FILE...     READELF is set
#
# Every FILE, a program or a shared library, needs some of the shared LIBRARIES, an extended regular
# expression for whole names, and no other.
. "$(dirname "$0")/../../../script/lib/common.sh"

for file in "${@:2}"; do
    needed=$("$READELF" -dW "$file" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
    say "${file##*/} needs: ${needed//$'\n'/ }"
    if [ -z "$needed" ] || grep -Evx "$1" <<<"$needed"; then
        die 'not as allowed'
    fi
done
