#!/usr/bin/env bash
# Usage: collect.sh RESULT_FOLDER BUILD_FOLDER: prints one JSON document of all results. Each file in
# the folder holds JSON values; the words of its name are their path.
set -euo pipefail

results=$1 build=$2
. "$(dirname "$0")/rivals.sh"

# KiB of the named programs with all their libraries but the C library's own.
disk_kb() {
    {
        realpath "$@"
        ldd "$@" | awk '$2 == "=>" && $3 !~ "/lib[cm]\\.so" { print $3 }' | xargs -r realpath
    } | sort -u | xargs du -Lk --apparent-size | awk '{ sum += $1 } END { print sum }'
}

for name in "${rival_names[@]}"; do
    programs=("${rival_commands[$name]%% *}")
    [ "$name" != script ] || programs=("$(command -v curl)" "$(command -v jq)")
    disk_kb "${programs[@]}" >"$results/rivals.$name.disk_kb"
done
# shellcheck disable=SC2016  # dpkg-query fills this in
dpkg-query -W -f '{"${Package}": "${Version}"}\n' \
    libc6 gcc curl libcurl4 openssl libcjson1 jq dash hyperfine libbenchmark-dev >"$results/versions"

# One hyperfine round is one value: other load on the machine affects all rivals of a round alike.
# Single operations: processor time in nanoseconds, the median of the repetitions.
# shellcheck source=/dev/null  # the system's names
jq -n --arg processor "$(sed -n 's/^model name.*: //p' /proc/cpuinfo | head -n 1)" \
    --argjson cores "$(nproc)" --arg kernel "$(uname -sr)" \
    --arg load "$(cut -d ' ' -f 1-3 /proc/loadavg)" \
    --arg system "$(. /etc/os-release && echo "$PRETTY_NAME")" '
    reduce inputs as $value ({}; (input_filename / "/" | last / ".") as $path
        | setpath($path; getpath($path) + [$value]))
    | def rounds($name): [.times[][].results[] | select(.command == $name)];
    def uploads: {wall_s: map(.wall), cpu_s: map(.user + .system), peak_kb: map(.peak_kb)};
    . as $all
    | {machine: {$processor, $cores, $kernel, $system, $load, versions: (.versions | add)},
       rivals: (.rivals | with_entries(.key as $name | .value |= {disk_kb: .disk_kb[0],
           peak_kb: (.usage | map(.peak_kb)), wall_s: ($all | rounds($name) | map(.median)),
           cpu_s: ($all | rounds($name) | map(.user + .system)),
           system_calls, instructions: (.instructions | add)})),
       big_upload: {mebibytes: .mebibytes[0], library: (.big_upload.library | uploads),
           curl: (.big_upload.curl | uploads),
           peak_kb_by_mib: (.big_upload.grown | map_values(map_values(map(.peak_kb))))},
       nanoseconds: ([.micro[][].benchmarks[] | select(.run_type == "iteration")] | group_by(.name)
           | map({(.[0].name): ((map(.cpu_time) | sort | .[length / 2 | floor])
               * {ns: 1, us: 1e3, ms: 1e6}[.[0].time_unit])}) | add),
       calls: (.calls | add)}' "$results"/*
