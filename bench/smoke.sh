#!/usr/bin/env bash
# Usage: smoke.sh BUILD_FOLDER
#
# Whether the measuring programs of single operations still run, and what in their figures never
# drifts: system calls. Then whether a recorded measurement still makes tables and plots.
set -euo pipefail

build=$1
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
scratch=$(mktemp -d "$build/bench-smoke.XXXXXX") # not in /tmp: private worlds have their own
trap 'rm -rf "$scratch"' EXIT

cmake --build "$build" --target benchmarks --parallel "$(nproc)" >"$scratch/output" 2>&1 ||
    { cat "$scratch/output" && exit 1; }

for subject in digest json log reply state; do
    "$build/bench/${subject}_bench" --benchmark_min_time=0.001 --benchmark_out="$scratch/$subject" \
        --benchmark_out_format=json >"$scratch/output" 2>&1 || { cat "$scratch/output" && exit 1; }
    # Every operation, and none that ended with an error.
    jq -e '(.benchmarks | length) >= 4 and all(.benchmarks[]; .error_occurred != true)' "$scratch/$subject" \
        >/dev/null || { echo "$subject: not every operation ran" && exit 1; }
done

{
    "$here/calls.sh" "$build/bench/state_bench" plain_write setter plain_read getter
    "$here/calls.sh" "$build/bench/log_bench" log_to_console log_to_file
} | jq -s add >"$scratch/calls"
jq -c . "$scratch/calls"
jq -e '.setter == .plain_write and .getter == .plain_read
    and all(.log_to_console, .log_to_file; .openat == 1 and .write == 1 and .close == 1)' \
    "$scratch/calls" >/dev/null

cp "$here/../docs/benchmarks.md" "$scratch"
"$here/publish.sh" "$here/../docs/benchmarks.json" "$scratch"
cmp "$scratch/benchmarks.md" "$here/../docs/benchmarks.md"
