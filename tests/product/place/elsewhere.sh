#!/usr/bin/env bash
# Usage: elsewhere.sh [--sample]     in the project's folder
#        elsewhere.sh --at FOLDER [--sample]
#
# The project works wherever it lies. Copies it to FOLDER, a path below /tmp or /mnt of namespaces of
# their own, readable by its owner only; builds it there, runs the demo, and runs tests that look at
# the device's folders, start programs, and preload libraries into them. Without FOLDER takes three in
# turn: one whose path the shell, the loader and make split at blanks, and two inside folders that the
# device has too. --sample takes the first, and a few tests.
set -euo pipefail

folders=("/tmp/new/a b ü/p" /tmp/app/p /mnt/data/p)
targets=(agent_example agent_example_test digest_test fail_log_fuzz json_parser_test
    virtual_device_program_test world_unit_test)
tests='(FileHelpers|NumberText|AgentExample|PrivateWorld|VirtualDevice)\..*|fuzz\.fail_log'
tests+='|.*/VirtualDeviceCall\..*|agent_example_on_virtual_device'
tests+='|scenario\.(CONFIG-ALL|nginx-store|real-daemons-at-once|killed-while-uploading)'
sample=()
if [ "${*: -1}" = --sample ]; then
    sample=(--sample)
    folders=("${folders[0]}")
    targets=(digest_test)
    tests='FileHelpers\..*|scenario\.(CONFIG-ALL|killed-while-uploading)'
fi

case ${1-} in
--at)
    as_root=(--user --map-root-user)
    [ "$(id -u)" -ne 0 ] || as_root=()
    exec unshare "${as_root[@]}" --mount "$0" --entered "$2" "${sample[@]}"
    ;;
--entered) ;;
*)
    for folder in "${folders[@]}"; do
        "$0" --at "$folder" "${sample[@]}"
    done
    exit
    ;;
esac

mount -t tmpfs tmpfs /tmp # the working directory can be read even when this covers its path
mount -t tmpfs tmpfs /mnt
umask 077
mkdir -p "$2"
tar -c --exclude=./build --exclude=./.git . | tar -x -C "$2"
cd "$2"

if ! script/demo >story || ! grep -q 'All as it should be' story; then
    cat story build/*.log >&2
    exit 1
fi
cmake --build build/release --parallel "$(nproc)" --target "${targets[@]}" >build/tests.log 2>&1 ||
    { tail -n 30 build/tests.log >&2 && exit 1; }
ctest --test-dir build/release --output-on-failure --no-tests=error --parallel "$(nproc)" \
    -R "^($tests)\$"
