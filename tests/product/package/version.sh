#!/usr/bin/env bash
# Usage: version.sh VERSION LIBRARY     in the project's folder
#
# The project's version, which CMakeLists.txt holds, is the one at the top of both changelogs, with
# one day in both, and names the built shared library: its file wholly, its SONAME by the first
# number, which the packages' files repeat. Every file names the same oldest CMake.
. script/lib/common.sh

version=$1
library=$2
major=${version%%.*}

# expect WHAT EXPECTED FOUND
expect() {
    [ "$2" = "$3" ] || die "$1: $3 instead of $2"
    say "ok: $1: $2"
}

read -r _ entry day < <(grep '^## ' CHANGELOG.md)
expect 'CHANGELOG.md, the version' "$version" "$entry"
expect 'debian/changelog, the version' "$version" "$(dpkg-parsechangelog -S Version)"
expect 'debian/changelog, the day' "$day" "($(date -ud "$(dpkg-parsechangelog -S Date)" +%F))"
expect 'versions in both' "$(sed -nE 's/^## ([^ ]+) .*/\1/p' CHANGELOG.md)" \
    "$(dpkg-parsechangelog --all --format rfc822 | sed -n 's/^Version: //p')"

expect 'the library, its file' "libcloudagent.so.$version" "$(basename "$(realpath "$library")")"
expect 'the library, its SONAME' "libcloudagent.so.$major" \
    "$(readelf -dW "$library" | sed -nE 's/.*\(SONAME\).*\[(.*)\]/\1/p')"
expect 'the symbols file, the SONAME' "libcloudagent.so.$major libcloudagent$major #MINVER#" \
    "$(head -n 1 "debian/libcloudagent$major.symbols")"
expect 'the packages, the library' "Package: libcloudagent$major" \
    "$(grep -E '^Package: libcloudagent[0-9]' debian/control)"

cmake=$(sed -n 's/^cmake_minimum_required(VERSION \(.*\))/\1/p' CMakeLists.txt)
expect 'the CMake it takes, in the presets' "$cmake" \
    "$(jq -r '.cmakeMinimumRequired | "\(.major).\(.minor)"' CMakePresets.json)"
expect 'in debian/control' "$cmake" "$(sed -nE 's/^ cmake \(>= (.*)\),/\1/p' debian/control)"
