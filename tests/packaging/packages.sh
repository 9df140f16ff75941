#!/usr/bin/env bash
# Usage: packages.sh VERSION [--sample]     in the project's folder
#
# Builds the Debian packages, and has lintian look at them. Installs them on a clean system that
# holds what they depend on and no more, uses them there, removes them, and compares every file with
# what was before: the program's packages first, then all of them beside a C compiler. In full it
# also builds them a second time: they come out the same to the last byte. Ends with status 77 where
# no system within the system can be entered.
set -euo pipefail

version=$1
extent=${2-}
tools=$PWD/tests/packaging/clean_root
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
exec 2>&1

# The packages that the package files depend on, without those that are among them.
dependencies() {
    local file
    for file in "$@"; do
        dpkg-deb --field "$file" Pre-Depends Depends | sed 's/^[^:]*://'
    done | tr , '\n' | sed -E 's/^ *//; s/[ |(:].*//' | grep . | sort -u |
        comm -23 - <(for file in "$@"; do dpkg-deb --field "$file" Package; done | sort)
}

# try_packages NAME "PACKAGE..." "PRESENT..." [ARGUMENT...]: installs the built PACKAGEs where what is
# PRESENT is installed, runs the test NAME of clean_root/ with the arguments, removes all again.
try_packages() {
    local name=$1 packages present file files=() in_root=("$tools/enter.sh" "$scratch/$1")
    read -ra packages <<<"$2"
    read -ra present <<<"$3"
    shift 3
    for file in "${packages[@]}"; do
        files+=("$scratch/packages/${file}_${version}_"*.deb)
    done
    mapfile -t -O "${#present[@]}" present < <(dependencies "${files[@]}")
    echo "=== on a system with ${present[*]}"
    "$tools/fill.sh" "$scratch/$name" "${present[@]}"
    mkdir "$scratch/$name/test"
    cp "${files[@]}" "$tools/look.sh" "$tools/$name.sh" "$scratch/$name/test"

    "${in_root[@]}" ldconfig
    "${in_root[@]}" bash /test/look.sh >"$scratch/before"
    "${in_root[@]}" bash -c 'dpkg --install /test/*.deb'
    "${in_root[@]}" bash "/test/$name.sh" "$@"
    "${in_root[@]}" dpkg --purge "${packages[@]}"
    "${in_root[@]}" bash /test/look.sh >"$scratch/after"
    diff -U 0 "$scratch/before" "$scratch/after"
    echo "=== gone without a trace: ${packages[*]}"
}

"$tools/enter.sh" --possible
script/package --check --output "$scratch/packages"
try_packages use_program 'libcloudagent0 kdump virtual-device' ''
try_packages use_library 'libcloudagent0 libcloudagent-dev kdump virtual-device' \
    'gcc libc6-dev make cmake pkg-config' "$version"

if [ "$extent" != --sample ]; then
    echo '=== built again'
    script/package --output "$scratch/again"
    for file in "$scratch"/packages/*.deb; do
        cmp "$file" "$scratch/again/${file##*/}"
    done
fi
