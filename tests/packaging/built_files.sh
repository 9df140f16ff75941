#!/usr/bin/env bash
# Usage: built_files.sh CONFIGURATION KDUMP SHARED_LIBRARY C_PROGRAM
#
# C_PROGRAM is one that is linked with the static library.
#
# What is linked to what, and that the hardening flags arrived.
# shellcheck disable=SC2317  # expect calls what it is given
set -euo pipefail

configuration=$1
kdump=$2
shared=$3
c_program=$4
wrong=0

expect() {
    local what=$1
    shift
    if "$@"; then
        echo "ok      $what"
    else
        echo "FAILED  $what"
        wrong=1
    fi
}
header_has() { readelf -hW "$1" | grep -qE "$2"; }
dynamic_has() { readelf -dW "$1" | grep -qE "$2"; }
segment_has() { readelf -lW "$1" | grep -qE "$2"; }
calls() { nm -D --undefined-only "$1" | grep -qE "$2"; }
needs_only() {
    local more
    more=$(readelf -dW "$1" | sed -nE 's/.*\(NEEDED\).*\[(.*)\]/\1/p' |
        grep -vE '^lib(curl|crypto|ssl|cjson|c|m)\.so\.[0-9]+$' || true)
    [ -z "$more" ] || { echo "$1 needs $more" && return 1; }
}

for file in "$kdump" "$shared"; do
    name=${file##*/}
    expect "$name needs libcurl, OpenSSL, cJSON and libc at most" needs_only "$file"
    expect "$name finds its libcurl through a run path" dynamic_has "$file" RUNPATH
    expect "$name binds its symbols at start" dynamic_has "$file" 'FLAGS.*NOW'
    expect "$name makes its relocations read-only" segment_has "$file" GNU_RELRO
    expect "$name has no executable stack" segment_has "$file" 'GNU_STACK.* RW +0x'
    expect "$name guards its stack frames" calls "$file" __stack_chk_fail
    if [ "$configuration" = Release ]; then
        expect "$name checks the bounds of libc calls" calls "$file" '_chk(@|$)'
    fi
done
expect 'kdump is position independent' header_has "$kdump" 'Type: +DYN'
expect 'the shared library has a versioned name' dynamic_has "$shared" 'SONAME.*libcloudagent\.so\.[0-9]'
expect 'the static library brings no other library in' needs_only "$c_program"
exit $wrong
