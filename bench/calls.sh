#!/usr/bin/env bash
# Usage: calls.sh PROGRAM OPERATION...: the system calls that each operation of a measuring program
# makes, one JSON object each.
set -euo pipefail

program=$1
scratch=$(mktemp)
trap 'rm -f "$scratch"' EXIT
times=2000

# {"openat": 2034, ...} for a run with so many operations.
counted() {
    BENCH_ITERATIONS=$2 strace -f -c -U calls,name -o "$scratch" "$program" \
        --benchmark_filter="^$1/" >/dev/null 2>&1
    awk '$1 + 0 > 0 && $2 != "total" { print $2, $1 }' "$scratch" |
        jq -R 'split(" ") | {(.[0]): (.[1] | tonumber)}' | jq -s add
}

# The difference of two runs is the operations alone.
for operation in "${@:2}"; do
    jq -n --arg name "$operation" --argjson times "$times" \
        --argjson one "$(counted "$operation" 1)" \
        --argjson many "$(counted "$operation" $((times + 1)))" \
        '{($name): ($many | with_entries(.value = ((.value - ($one[.key] // 0)) / $times | round))
            | with_entries(select(.value != 0)))}'
done
