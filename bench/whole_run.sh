#!/usr/bin/env bash
# Usage (inside the virtual device): whole_run.sh RESULT_FOLDER BUILD_FOLDER ROUNDS
#
# A whole upload of the segment trace beside rivals that do the same: times in rounds, so that
# what else the machine does meets all alike; peak memory; system calls; instructions.
set -euo pipefail

results=$1 build=$2 rounds=$3
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
dump=/mnt/data/iss_config/segmentrace.txt
# shellcheck source=bench/rivals.sh
. "$here/rivals.sh"

cat >/tmp/prepare <<'END'
#!/bin/sh
rm -f /tmp/kdump_process_segmentrace
cp /tmp/dump_kept /mnt/data/iss_config/segmentrace.txt
END
chmod +x /tmp/prepare
cp "$dump" /tmp/dump_kept
echo 0 >/mnt/data/iss_config/current_config/cloud_debug # nobody watches the console

# Runs a rival under the command line before it; whoever does not upload the dump must not win.
upload_under() {
    /tmp/prepare
    "$@" >/tmp/output 2>&1
    if [ -e "$dump" ]; then
        echo "${*: -1} did not upload the dump:" >&2
        cat /tmp/output >&2
        exit 1
    fi
}

timed=()
for name in "${rival_names[@]}"; do
    read -ra command <<<"${rival_commands[$name]}"
    timed+=(--command-name "$name" "${rival_commands[$name]}")
    rm -f "$results/whole_run.$name".*
    # How often a program must wait, and so what it calls, varies a little.
    for _ in {1..15}; do
        upload_under "$build/device/bench/measure" "$results/whole_run.$name.usage" "${command[@]}"
        upload_under strace -f -c -U calls,name -o /tmp/calls "${command[@]}"
        awk '$2 == "total" { print $1 }' /tmp/calls >>"$results/whole_run.$name.calls"
    done
    upload_under valgrind --tool=callgrind --callgrind-out-file=/dev/null --trace-children=yes \
        "${command[@]}"
    sed -n 's/.*Collected : \([0-9]*\).*/\1/p' /tmp/output >"$results/whole_run.$name.instructions"
done

for ((round = 1; round <= rounds; round++)); do
    hyperfine --style none --shell none --runs 3 --prepare /tmp/prepare \
        --export-json "$results/whole_run.times.$round" "${timed[@]}" >/dev/null
done
