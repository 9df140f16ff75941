#!/usr/bin/env bash
# Usage (inside the virtual device, with nginx): big_upload.sh RESULT_FOLDER BUILD_FOLDER PAIRS [MIB]
#
# Uploads one file to nginx over TLS, in turns by the library and by `curl -T`; then files from 1 MiB
# on, for the growth of the peak memory.
set -euo pipefail

results=$1 build=$2 pairs=$3 mebibytes=${4:-1024}
url=https://uploads.example.com/big
bodies=/run/world/daemons/bodies

# Storing a body must cost both the same: use large pages, and warm them, because a virtual machine
# may have to get idle memory back from its host, which takes longer than the transfer.
mount -t tmpfs -o huge=always tmpfs "$bodies"

# send SENDER FILE RESULT: uploads the file; fails unless all of it arrived.
send() {
    local size command
    size=$(stat -c %s "$2")
    head -c "$size" /dev/zero >"$bodies/warm"
    rm "$bodies/warm"
    if [ "$1" = library ]; then
        ln -f "$2" /run/world/sent # the library removes what it has sent
        command=("$build/device/bench/send_file" /run/world/sent "$url")
    else
        command=(curl -s -f -k --cert CRT --key KEY -T "$2" "$url")
    fi
    "$build/device/bench/measure" "$3" "${command[@]}" >/dev/null 2>&1
    find "$bodies" -type f -size "${size}c" -delete -print | grep -q . ||
        { echo "not all of $2 arrived" >&2 && exit 1; }
}

head -c "${mebibytes}M" /dev/zero >/run/world/big
send curl /run/world/big /dev/null
for ((pair = 1; pair <= pairs; pair++)); do
    order=(library curl)
    ((pair % 2)) || order=(curl library)
    for sender in "${order[@]}"; do
        send "$sender" /run/world/big "$results/big_upload.$sender"
    done
done
rm /run/world/big

for size in 1 4 16 64 256 1024; do
    [ "$size" -le "$mebibytes" ] || continue
    head -c "${size}M" /dev/zero >/run/world/grown
    for _ in 1 2 3; do
        for sender in curl library; do
            send "$sender" /run/world/grown "$results/big_upload.grown.$sender.$size"
        done
    done
done
