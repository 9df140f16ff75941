#!/usr/bin/env bash
# Usage (inside a virtual device without local service): first_byte.sh RESULT_FOLDER BUILD_FOLDER RUNS
#
# How long each rival takes from its start to its first byte on the wire.
set -euo pipefail

results=$1 build=$2 runs=$3
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=bench/rivals.sh
. "$here/rivals.sh"

echo 0 >/mnt/data/iss_config/current_config/cloud_debug
rm -f "$results"/first_byte.*
for ((run = 1; run <= runs; run++)); do
    for name in "${rival_names[@]}"; do
        read -ra command <<<"${rival_commands[$name]}"
        "$build/device/bench/first_byte" 1 "${command[@]}" >>"$results/first_byte.$name" 2>/dev/null
    done
done
