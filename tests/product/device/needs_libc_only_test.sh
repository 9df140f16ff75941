#!/usr/bin/env bash
# Usage: needs_libc_only_test.sh READELF KDUMP
#
# Everything but the C library is inside the program: libc, its mathematics and its loader are all
# that it asks for.
set -euo pipefail

needed=$("$1" --dynamic "$2" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
echo "needed: ${needed//$'\n'/ }"
others=$(grep -Ev '^(lib[cm]|ld)[-.]' <<<"$needed") || true
[ -n "$needed" ] && [ -z "$others" ]
