#!/usr/bin/env bash
# Usage (inside the virtual device, with nginx): big_upload.sh RESULT_FOLDER BUILD_FOLDER PAIRS [MIB]
#
# One file to nginx over TLS, in turns by the library's upload and by `curl -T`; then, for the growth
# of the memory, files from 1 MiB on.
set -euo pipefail

results=$1 build=$2 pairs=$3 mebibytes=${4:-1024}
measure=$build/device/bench/measure
url=https://uploads.example.com/big
bodies=/run/world/peers/bodies

rm -f "$results"/big_upload.*

# Storing the body must cost both the same: in large pages that the machine has just used. Memory that
# lay idle may first have to be got back from the host of a virtual machine, which takes longer than
# the transfer itself.
mount -t tmpfs -o huge=always tmpfs "$bodies"
warm_memory() {
    head -c "$(stat -c %s "$1")" /dev/zero >"$bodies/warm"
    rm "$bodies/warm"
}

# The library removes what it has sent: it gets a link.
by_library() {
    warm_memory "$1"
    ln -f "$1" /run/world/sent
    "$measure" "$2" "$build/device/bench/send_file" /run/world/sent "$url" >/dev/null 2>&1
    stored "$1"
}

by_curl() {
    warm_memory "$1"
    "$measure" "$2" curl -s -f -k --cert CRT --key KEY -T "$1" "$url"
    stored "$1"
}

# What arrived is what was sent; it makes room for the next.
stored() {
    local body
    body=$(find "$bodies" -type f -size "$(stat -c %s "$1")c")
    [ -n "$body" ] || { echo "not all of $1 arrived" >&2 && exit 1; }
    rm -f "$body"
}

head -c "${mebibytes}M" /dev/zero >/run/world/big
by_curl /run/world/big /dev/null
for ((pair = 1; pair <= pairs; pair++)); do
    # Either goes first in its turn.
    if ((pair % 2)); then
        by_library /run/world/big "$results/big_upload.library"
        by_curl /run/world/big "$results/big_upload.curl"
    else
        by_curl /run/world/big "$results/big_upload.curl"
        by_library /run/world/big "$results/big_upload.library"
    fi
done
rm /run/world/big

for size in 1 4 16 64 256 1024; do
    [ "$size" -le "$mebibytes" ] || continue
    head -c "${size}M" /dev/zero >/run/world/grown
    for _ in 1 2 3; do
        by_curl /run/world/grown "$results/big_upload.grown.curl.$size"
        by_library /run/world/grown "$results/big_upload.grown.library.$size"
    done
done
