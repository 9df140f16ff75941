#!/usr/bin/env bash
# Usage (inside the virtual device): whole_run.sh RESULT_FOLDER BUILD_FOLDER ROUNDS
#
# A whole upload of the segment trace, by the program and by its rivals: peak memory, system calls,
# instructions, and times in rounds, so that other load on the machine affects all alike.
set -euo pipefail

results=$1 build=$2 rounds=$3
dump=/mnt/data/iss_config/segmentrace.txt
. "$(dirname "$0")/rivals.sh"

cat >/tmp/prepare <<'END'
#!/bin/sh
rm -f /tmp/kdump_process_segmentrace
cp /tmp/dump_kept /mnt/data/iss_config/segmentrace.txt
END
chmod +x /tmp/prepare
cp "$dump" /tmp/dump_kept
echo 0 >/mnt/data/iss_config/current_config/cloud_debug # no console output

# upload_under COMMAND...: runs it; fails unless the dump was uploaded.
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
    for _ in {1..15}; do # the number of waits varies, and with it the number of system calls
        upload_under "$build/device/bench/measure" "$results/rivals.$name.usage" "${command[@]}"
        upload_under strace -f -c -U calls,name -o /tmp/calls "${command[@]}"
        awk '$2 == "total" { print $1 }' /tmp/calls >>"$results/rivals.$name.system_calls"
    done
    upload_under valgrind --tool=callgrind --callgrind-out-file=/dev/null --trace-children=yes \
        "${command[@]}"
    sed -n 's/.*Collected : \([0-9]*\).*/\1/p' /tmp/output >"$results/rivals.$name.instructions"
done

for ((round = 1; round <= rounds; round++)); do
    hyperfine --style none --shell none --runs 3 --prepare /tmp/prepare \
        --export-json "$results/times.$round" "${timed[@]}" >/dev/null
done
