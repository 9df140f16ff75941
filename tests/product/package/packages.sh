#!/usr/bin/env bash
# Usage: packages.sh VERSION [--sample]     in the project's folder
#
# Builds the Debian packages and checks them with lintian. Installs them on a clean system that holds
# only what they depend on, over packages with the old names, uses them, removes them, and compares
# every file with the state before: first the program's packages, then all of them beside a C
# compiler. In full it builds them a second time: every byte is the same. Status 77: no system within
# the system can be entered.
. "$(dirname "$0")/../../../script/lib/common.sh"

version=$1
extent=${2-}
tools=$PWD/tests/product/package/clean_root
make_scratch
exec 2>&1

# The packages that the package files depend on, without those that are among them.
dependencies() {
    local file
    for file in "$@"; do
        dpkg-deb --field "$file" Pre-Depends Depends | sed 's/^[^:]*://'
    done | tr , '\n' | sed -E 's/^ *//; s/[ |(:].*//' | grep . | sort -u |
        comm -23 - <(for file in "$@"; do dpkg-deb --field "$file" Package; done | sort)
}

# Makes $2, a package named $1 that holds the file $3 and depends on $4: the old names were in use.
old_package() {
    local tree=$scratch/old/$1
    mkdir -p "$tree/DEBIAN" "$tree/${3%/*}"
    echo "$1 of old" >"$tree/$3"
    printf 'Package: %s\nVersion: %s\nArchitecture: all\nDepends: %s\nMaintainer: A <a@example.com>\nDescription: old\n' \
        "$1" "$version" "$4" >"$tree/DEBIAN/control"
    dpkg-deb --root-owner-group --build "$tree" "$2" >/dev/null
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
    mkdir -p "$scratch/$name/test/old"
    old_package kdump "$scratch/$name/test/old/kdump.deb" usr/sbin/kdump bash
    old_package virtual-device "$scratch/$name/test/old/virtual-device.deb" usr/bin/virtual_device \
        "kdump (= $version)"
    cp "${files[@]}" "$tools/look.sh" "$tools/$name.sh" "$scratch/$name/test"

    "${in_root[@]}" ldconfig
    "${in_root[@]}" bash /test/look.sh >"$scratch/before"
    "${in_root[@]}" dpkg --install /test/old/kdump.deb /test/old/virtual-device.deb
    "${in_root[@]}" bash -c 'dpkg --install /test/*.deb'
    # shellcheck disable=SC2016  # for dpkg-query
    if "${in_root[@]}" dpkg-query --show --showformat '${db:Status-Status}\n' kdump virtual-device |
        grep -x installed; then
        echo 'the old names are still installed'
        return 1
    fi
    "${in_root[@]}" bash "/test/$name.sh" "$@"
    "${in_root[@]}" dpkg --purge "${packages[@]}"
    "${in_root[@]}" bash /test/look.sh >"$scratch/after"
    diff -U 0 "$scratch/before" "$scratch/after"
    echo "=== gone without a trace: ${packages[*]}"
}

"$tools/enter.sh" --possible
script/package --check --output "$scratch/packages"
try_packages use_program 'libcloudagent0 cloudagent-kdump cloudagent-virtual-device' ''
try_packages use_library \
    'libcloudagent0 libcloudagent-dev cloudagent-kdump cloudagent-virtual-device' \
    'gcc libc6-dev make cmake pkg-config' "$version"

if [ "$extent" != --sample ]; then
    echo '=== built again'
    script/package --output "$scratch/again"
    for file in "$scratch"/packages/*.deb; do
        cmp "$file" "$scratch/again/${file##*/}"
    done
fi
