#!/usr/bin/env bash
# Usage: needs.sh LIBRARIES FILE...     READELF is set
#
# Every FILE, a program or a shared library, needs some of the shared LIBRARIES, an extended regular
# expression for whole names, and no other. Where LIBRARIES is empty, it needs no loader either.
. "$(dirname "$0")/../../../script/lib/common.sh"

for file in "${@:2}"; do
    needed=$("$READELF" -dW "$file" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
    say "${file##*/} needs: ${needed//$'\n'/ }"
    if [ -z "$1" ]; then
        [ -z "$needed$("$READELF" -lW "$file" | grep INTERP)" ] || die 'it is not static'
    elif [ -z "$needed" ] || grep -Evx "$1" <<<"$needed"; then
        die 'not as allowed'
    fi
done
