#!/usr/bin/env bash
# Usage (inside a virtual device without local service): first_byte.sh RESULT_FOLDER BUILD_FOLDER RUNS
#
# Measures how long each rival takes from its start to its first byte on the wire.
set -euo pipefail

results=$1 build=$2 runs=$3
. "$(dirname "$0")/rivals.sh"

echo 0 >/mnt/data/iss_config/current_config/cloud_debug
for ((run = 1; run <= runs; run++)); do
    for name in "${rival_names[@]}"; do
        read -ra command <<<"${rival_commands[$name]}"
        "$build/device/bench/first_byte" "${command[@]}" \
            >>"$results/rivals.$name.first_byte_us" 2>/dev/null
    done
done
