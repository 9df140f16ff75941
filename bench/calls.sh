#!/usr/bin/env bash
# Usage: calls.sh PROGRAM OPERATION...: prints the system calls that each operation of a benchmark
# program makes, one JSON object per operation.
set -euo pipefail

program=$1
scratch=$(mktemp)
trap 'rm -f "$scratch"' EXIT
times=2000

# counted OPERATION ITERATIONS: the calls of a run, {"openat": 2034, ...}
counted() {
    BENCH_ITERATIONS=$2 strace -f -c -U calls,name -o "$scratch" "$program" \
        --benchmark_filter="^$1/" >/dev/null 2>&1
    awk '$1 + 0 > 0 && $2 != "total" { printf "{\"%s\": %d}\n", $2, $1 }' "$scratch" | jq -s add
}

# The difference of two runs is the operations alone.
for operation in "${@:2}"; do
    jq -n --arg name "$operation" --argjson times "$times" \
        --argjson one "$(counted "$operation" 1)" \
        --argjson many "$(counted "$operation" $((times + 1)))" \
        '{($name): ($many | with_entries(.value = ((.value - ($one[.key] // 0)) / $times | round)
            | select(.value != 0)))}'
done
