#!/bin/bash
# Usage: use_library.sh VERSION     in a root with the packages and a C compiler installed
#
# Builds the example from the documentation of libcloudagent-dev in each of the four ways, shared and
# static, by pkg-config and by CMake, and runs each on the virtual device. There is no C++ compiler.
set -euo pipefail

version=$1
work=$(mktemp -d /root/XXXXXX)
trap 'rm -rf "$work"' EXIT
if type c++ g++ 2>/dev/null; then exit 1; fi

# The folder $1 with the example in it.
example_in() {
    cp -r /usr/share/doc/libcloudagent-dev/examples "$work/$1"
    cd "$work/$1"
}

# Agent $1 needs the shared library or not, as $2 says; finds the library's libcurl, and not the one
# that cmake came with; and works.
try_agent() {
    local needs=no libraries
    libraries=$(ldd "$1")
    echo "$libraries"
    case $libraries in *libcloudagent.so.*) needs=yes ;; esac
    [ "$needs" = "$2" ]
    case $libraries in *'/cloudagent/libcurl.so.4 '*) ;; *) exit 1 ;; esac
    virtual_device run -- "$1" >"$work/story" || { cat "$work/story" && exit 1; }
}

echo '== shared, by make and pkg-config'
[ "$(pkg-config --modversion libcloudagent)" = "$version" ]
example_in shared
make CC=cc
try_agent "$work/shared/agent" yes

echo '== static, by pkg-config'
example_in static
flags=$(pkg-config --static --cflags --libs libcloudagent)
# shellcheck disable=SC2086  # words of a command
cc -std=c11 agent.c -o agent ${flags/ -lcloudagent / -l:libcloudagent.a }
try_agent "$work/static/agent" no

echo '== shared, by CMake'
example_in cmake-shared
sed -i "s/find_package(cloudagent /&$version EXACT /" CMakeLists.txt
cmake -S . -B build
cmake --build build
try_agent "$work/cmake-shared/build/agent" yes

echo '== static, by CMake'
example_in cmake-static
sed -i 's/cloudagent::cloudagent/&_static/' CMakeLists.txt
cmake -S . -B build
cmake --build build
try_agent "$work/cmake-static/build/agent" no
