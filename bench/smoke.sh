#!/usr/bin/env bash
# Usage: smoke.sh BUILD_FOLDER
#
# Checks that the benchmarks of single operations run, that the numbers of their system calls, which
# never drift, are right, and that the recorded results still make the same tables and plots.
set -euo pipefail

build=$1
here=$(dirname "$0")
scratch=$(mktemp -d "$build/bench-smoke.XXXXXX") # /tmp is not visible in a private world
trap 'rm -rf "$scratch"' EXIT

cmake --build "$build" --target benchmarks --parallel "$(nproc)" >"$scratch/output" 2>&1 ||
    { cat "$scratch/output" && exit 1; }

"$build/bench/operations" --benchmark_min_time=0.001 --benchmark_out="$scratch/operations" \
    --benchmark_out_format=json >"$scratch/output" 2>&1 || { cat "$scratch/output" && exit 1; }
jq -e '(.benchmarks | length) == 52 and all(.benchmarks[]; .error_occurred != true)' \
    "$scratch/operations" >/dev/null || { echo "not every operation ran" && exit 1; }

"$here/calls.sh" "$build/bench/operations" plain_write setter plain_read getter \
    log_to_console log_to_file | jq -s add >"$scratch/calls"
jq -c . "$scratch/calls"
jq -e '.setter == .plain_write and .getter == .plain_read
    and all(.log_to_console, .log_to_file; .openat == 1 and .write == 1 and .close == 1)' \
    "$scratch/calls" >/dev/null

cp "$here/../docs/benchmarks.md" "$scratch"
"$here/publish.sh" "$here/../docs/benchmarks.json" "$scratch"
cmp "$scratch/benchmarks.md" "$here/../docs/benchmarks.md"
