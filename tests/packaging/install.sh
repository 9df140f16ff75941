#!/usr/bin/env bash
# Usage: install.sh BUILD_FOLDER CMAKE VERSION     in the project's folder; CC and CXX are set
#
# Installs into a temporary prefix, moves it, and builds agents against it as their authors would:
# the example in C11 by make and pkg-config and by CMake, one in C with the static library, one in
# C++17 with either.
set -euo pipefail

build=$1
cmake=$2
version=$3
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
exec 2>&1
unset LD_LIBRARY_PATH

echo '== install'
"$cmake" --install "$build" --prefix "$scratch/prefix" >/dev/null
prefix=$scratch/prefix

echo '== the installed program finds its libcurl'
ldd "$prefix/sbin/kdump" | tee "$scratch/ldd"
grep -q "$prefix/.*/libcurl.so" "$scratch/ldd"
if grep 'not found' "$scratch/ldd"; then exit 1; fi

echo '== what is installed looks for libraries in its own folder only'
run_path_of() { readelf -dW "$1" | sed -nE 's/.*\((RPATH|RUNPATH)\).*\[(.*)\]/\2/p'; }
[ "$(run_path_of "$prefix/sbin/kdump")" = "\$ORIGIN/../lib/cloudagent" ]
[ "$(run_path_of "$prefix/lib/libcloudagent.so")" = "\$ORIGIN/cloudagent" ]

echo '== the description for pkg-config'
[ "$(PKG_CONFIG_PATH=$prefix/lib/pkgconfig pkg-config --modversion libcloudagent)" = "$version" ]

echo '== the example by make and pkg-config'
cp -r examples "$scratch/by-make"
PKG_CONFIG_PATH=$prefix/lib/pkgconfig make -C "$scratch/by-make" CC="$CC" -B agent
ldd "$scratch/by-make/agent" | tee "$scratch/ldd"
grep -q "$prefix/lib/libcloudagent.so" "$scratch/ldd"
grep -q "$prefix/.*/libcurl.so" "$scratch/ldd"

moved=$scratch/moved
mv "$prefix" "$moved"
echo '== the example by CMake, against the moved installation'
"$cmake" -S examples -B "$scratch/by-cmake" -DCMAKE_PREFIX_PATH="$moved" >/dev/null
"$cmake" --build "$scratch/by-cmake"
ldd "$scratch/by-cmake/agent" | grep "$moved/.*/libcurl.so"

for agent in c_agent cxx_agent; do
    echo "== $agent"
    "$cmake" -S "tests/packaging/$agent" -B "$scratch/$agent" -DCMAKE_PREFIX_PATH="$moved" \
        -DWANTED_VERSION="$version" >/dev/null
    "$cmake" --build "$scratch/$agent"
done
"$scratch/c_agent/agent"
"$scratch/cxx_agent/with_shared"
"$scratch/cxx_agent/with_static"
