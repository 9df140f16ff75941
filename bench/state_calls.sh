#!/usr/bin/env bash
# Usage: state_calls.sh STATE_BENCH: system calls of each operation on a state file, one line each:
# name and calls an operation.
set -euo pipefail

scratch=$(mktemp)
trap 'rm -f "$scratch"' EXIT
operations=2000
for name in plain_write setter plain_read getter; do
    # The difference of two runs is the operations alone.
    counts=()
    for times in 1 $((operations + 1)); do
        BENCH_ITERATIONS=$times strace -f -c -U calls,name -o "$scratch" "$1" \
            --benchmark_filter="^$name/" >/dev/null 2>&1
        counts+=("$(awk '$2 == "total" { print $1 }' "$scratch")")
    done
    echo "$name $(((counts[1] - counts[0] + operations / 2) / operations))"
done
