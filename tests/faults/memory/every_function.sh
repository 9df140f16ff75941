#!/usr/bin/env bash
# Usage: every_function.sh TORTURE LIBRARY
#
# The table of tortured operations names every function that the shared library exports, and no
# other.
set -euo pipefail

if [ "${1:-}" = --help ]; then
    sed -n '2,/^$/s/^# \{0,1\}//p' "$0"
    exit 0
fi
torture=$1
library=$2

exported=$(nm -D --defined-only "$library" | awk '$2 == "T" { print $NF }' | sort -u)
tortured=$("$torture" --functions | sort -u)
echo "$(wc -l <<<"$exported") functions are exported"
diff -u --label exported --label tortured <(echo "$exported") <(echo "$tortured")
