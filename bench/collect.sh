#!/usr/bin/env bash
# Usage: collect.sh RESULT_FOLDER BUILD_FOLDER: what was measured, as one JSON document.
set -euo pipefail

results=$1
build=$2 # for rivals.sh
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=bench/rivals.sh
. "$here/rivals.sh"

# KiB of the named programs with all their libraries but the C library's own.
disk_kb() {
    {
        realpath "$@"
        ldd "$@" | awk '$2 == "=>" { print $3 }' | { grep -Ev '/lib[cm]\.so' || true; } | xargs -r realpath
    } | sort -u | xargs du -Lk --apparent-size | awk '{ sum += $1 } END { print sum }'
}

# One round of hyperfine is one value: what else the machine does meets all rivals of a round alike.
times() {
    jq --arg name "$1" '.results[] | select(.command == $name) | {wall: .median, cpu: (.user + .system)}' \
        "$results"/whole_run.times.*
}

rival() {
    local name=$1 programs=("${rival_commands[$1]%% *}")
    [ "$name" != script ] || programs=("$(command -v curl)" "$(command -v jq)")
    jq -n --arg name "$name" --argjson disk "$(disk_kb "${programs[@]}")" \
        --slurpfile usage "$results/whole_run.$name.usage" \
        --slurpfile calls "$results/whole_run.$name.calls" \
        --slurpfile instructions "$results/whole_run.$name.instructions" \
        --slurpfile first_byte "$results/first_byte.$name" --slurpfile times <(times "$name") \
        '{($name): {disk_kb: $disk, peak_kb: [$usage[].peak_kb], wall_s: [$times[].wall],
            cpu_s: [$times[].cpu], first_byte_us: $first_byte, system_calls: $calls,
            instructions: ($instructions | add)}}'
}

# {"SENDER": {"MIB": KiB, ...}, ...}
peaks_by_size() {
    local file
    for file in "$results"/big_upload.grown.*; do
        jq -s --arg name "${file#*.grown.}" \
            '($name / ".") as [$sender, $size] | {($sender): {($size): map(.peak_kb)}}' "$file"
    done | jq -s 'reduce .[] as $one ({}; . * $one)'
}

uploads() {
    jq -s '{wall_s: map(.wall), cpu_s: map(.user + .system), peak_kb: map(.peak_kb)}' \
        "$results/big_upload.$1"
}

# Processor time in nanoseconds: the median of each operation's repetitions.
operations() {
    jq -s '[.[].benchmarks[] | select(.run_type == "iteration")] | group_by(.name)
        | map({(.[0].name): ((map(.cpu_time) | sort | .[length / 2 | floor])
            * {ns: 1, us: 1e3, ms: 1e6}[.[0].time_unit])}) | add' "$results"/micro.*
}

versions() {
    # shellcheck disable=SC2016  # dpkg-query fills this in
    dpkg-query -W -f '${Package} ${Version}\n' \
        libc6 gcc curl libcurl4 openssl libcjson1 jq dash hyperfine libbenchmark-dev |
        jq -R 'split(" ") | {(.[0]): .[1]}' | jq -s add
}

# shellcheck source=/dev/null  # the names of the system
jq -n --arg processor "$(sed -n 's/^model name.*: //p' /proc/cpuinfo | head -n 1)" \
    --argjson cores "$(nproc)" --arg kernel "$(uname -sr)" \
    --arg load "$(cut -d ' ' -f 1-3 /proc/loadavg)" \
    --arg system "$(. /etc/os-release && echo "$PRETTY_NAME")" --argjson versions "$(versions)" \
    --slurpfile rivals <(for name in "${rival_names[@]}"; do rival "$name"; done) \
    --argjson library "$(uploads library)" --argjson curl "$(uploads curl)" \
    --argjson mebibytes "$(<"$results/mebibytes")" \
    --argjson grown "$(peaks_by_size)" --argjson operations "$(operations)" \
    --slurpfile calls "$results/calls" \
    '{machine: {processor: $processor, cores: $cores, kernel: $kernel, system: $system, load: $load,
        versions: $versions},
      rivals: ($rivals | add),
      big_upload: {mebibytes: $mebibytes, library: $library, curl: $curl, peak_kb_by_mib: $grown},
      nanoseconds: $operations, calls: ($calls | add)}'
