#!/usr/bin/env bash
# Usage: wide_times_test.sh READELF KDUMP
#
# On a 32-bit processor everything in the program, its libraries too, has times of 64 bits: it asks the
# C library for no call whose times end in 2038, neither by its own name nor by that for large files.
set -euo pipefail

calls='time|gettimeofday|clock_gettime|nanosleep|select|utimes?|mktime|ctime|gmtime|localtime'
calls+='|[fl]?stat'
asked=$("$1" --dyn-syms --wide "$2" | awk '$7 == "UND" { sub(/@.*/, "", $8); print $8 }')
narrow=$(grep -Ex "($calls)(_r|at)?(64)?" <<<"$asked") || true
echo "calls with times of 32 bits: ${narrow//$'\n'/ }"
grep -Fx __time64 <<<"$asked" && [ -z "$narrow" ]
