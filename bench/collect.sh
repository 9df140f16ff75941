#!/usr/bin/env bash
# Usage: collect.sh RESULT_FOLDER BUILD_FOLDER: what was measured, as one JSON document.
set -euo pipefail

results=$1 build=$2
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=bench/rivals.sh
. "$here/rivals.sh"

# KiB of the named programs with all their libraries but the C library's own.
disk_kb() {
    {
        realpath "$@"
        ldd "$@" | sed -n 's/.*\(=> \| \)\(\/[^ ]*\) (.*/\2/p' | grep -Ev '/(libc|libm|ld-linux[^/]*)\.so' |
            xargs -r realpath
    } | sort -u | xargs du -Lk --apparent-size | awk '{ sum += $1 } END { print sum }'
}

rival() {
    local name=$1 program=${rival_commands[$1]%% *}
    case $name in
    script) disk=$(disk_kb "$(command -v curl)" "$(command -v jq)") ;;
    *) disk=$(disk_kb "$program") ;;
    esac
    jq -n --arg name "$name" --argjson disk "$disk" \
        --slurpfile usage "$results/whole_run.$name.usage" \
        --slurpfile first_byte "$results/first_byte.$name" \
        --slurpfile times <(jq --arg name "$name" '.results[] | select(.command == $name)' \
            "$results"/whole_run.times.*) \
        --argjson calls "$(awk '$2 == "total" { print $1 }' "$results/whole_run.$name.calls")" \
        --slurpfile instructions "$results/whole_run.$name.instructions" \
        '{($name): {disk_kb: $disk, peak_kb: [$usage[].peak_kb], wall_s: [$times[].times[]],
            cpu_s: [$times[] | .user + .system], first_byte_us: $first_byte, system_calls: $calls,
            instructions: ($instructions | add)}}'
}

for name in "${rival_names[@]}"; do
    rival "$name"
done | jq -s add >"$results/rivals"

for file in "$results"/big_upload.grown.*; do
    jq --arg size "${file##*.}" '{($size): .peak_kb}' "$file"
done | jq -s add >"$results/grown"

jq -s '[.[].benchmarks[] | select(.run_type == "iteration")] | group_by(.name)
    | map({(.[0].name): ([.[].cpu_time | . ] | sort | .[length / 2 | floor])
        * {ns: 1, us: 1e3, ms: 1e6}[.[0].time_unit]}) | add' "$results"/micro.* >"$results/micro"

jq -n --arg processor "$(sed -n 's/^model name.*: //p' /proc/cpuinfo | head -n 1)" \
    --arg cores "$(nproc)" --arg kernel "$(uname -sr)" --arg load "$(cut -d ' ' -f 1-3 /proc/loadavg)" \
    --slurpfile rivals "$results/rivals" --slurpfile grown "$results/grown" \
    --slurpfile micro "$results/micro" \
    --slurpfile library "$results/big_upload.library" --slurpfile curl "$results/big_upload.curl" \
    --rawfile state_calls "$results/state_calls" \
    '{machine: {processor: $processor, cores: $cores, kernel: $kernel, load: $load},
      rivals: $rivals[0], big_upload: {library: $library, curl: $curl, peak_kb_by_mib: $grown[0]},
      nanoseconds: $micro[0],
      state_calls: ($state_calls | [splits("\n") | select(. != "") / " " | {(.[0]): (.[1] | tonumber)}]
        | add)}'
