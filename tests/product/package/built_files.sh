#!/usr/bin/env bash
# Usage: built_files.sh KDUMP SHARED_LIBRARY C_PROGRAM
#
# C_PROGRAM is one that is linked with the static library.
#
# What is linked to what.
# shellcheck disable=SC2317  # expect calls what it is given
set -euo pipefail

kdump=$1
shared=$2
c_program=$3
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
dynamic_has() { readelf -dW "$1" | grep -E "$2" >/dev/null; }
needs_only() {
    local more
    more=$(readelf -dW "$1" | sed -nE 's/.*\(NEEDED\).*\[(.*)\]/\1/p' |
        grep -vE '^lib(curl|crypto|ssl|cjson|c|m)\.so\.[0-9]+$' || true)
    [ -z "$more" ] || { echo "$1 needs $more" && return 1; }
}

for file in "$kdump" "$shared"; do
    name=${file##*/}
    expect "$name needs libcurl, OpenSSL, cJSON and libc at most" needs_only "$file"
done
expect 'the shared library has a versioned name' dynamic_has "$shared" 'SONAME.*libcloudagent\.so\.[0-9]'
expect 'the static library brings no other library in' needs_only "$c_program"
exit $wrong
