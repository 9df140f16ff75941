#!/usr/bin/env bash
# Usage: install.sh BUILD_FOLDER CMAKE VERSION HEADER...     in the project's folder; CC and CXX are set
#
# Installs into a temporary prefix, moves it, and builds agents against it as their authors would:
# the example in C11 by make and pkg-config and by CMake, one in C with the static library, one in
# C++17 with either, and one in both languages whose own headers have the names of the library's.
. "$(dirname "$0")/../../../script/lib/common.sh"

build=$1
cmake=$2
version=$3
shift 3
headers=("$@")
make_scratch
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

echo '== the header folders hold the library and its libcurl, and nothing else'
[ "$(cd "$prefix/include" && echo *)" = 'cloudagent cloudagent-curl' ]
[ "$(cd "$prefix/include/cloudagent-curl" && echo *)" = curl ]
(cd "$prefix/include/cloudagent" && printf '%s\n' */*) | diff <(printf '%s\n' "${headers[@]}" | sort) -

echo '== an agent whose headers have the names of the library, by pkg-config'
tests/product/package/own_headers/write_agent.sh "$scratch/own_headers" "${headers[@]}"
for compiler in "$CC -std=c11 -xc" "$CXX -std=c++17 -xc++"; do
    # shellcheck disable=SC2046,SC2086  # words of a command
    (
        export PKG_CONFIG_PATH=$prefix/lib/pkgconfig
        $compiler -Wall -Wextra -Wpedantic -Werror -I"$scratch/own_headers" \
            $(pkg-config --cflags libcloudagent) "$scratch/own_headers/agent.c" \
            -o "$scratch/own_headers/agent" -xnone $(pkg-config --libs libcloudagent)
    )
    "$scratch/own_headers/agent"
done

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

cp tests/product/package/own_headers/CMakeLists.txt "$scratch/own_headers"
for agent in "$PWD"/tests/product/package/{c_agent,cxx_agent} "$scratch/own_headers"; do
    echo "== ${agent##*/}"
    built=$scratch/built/${agent##*/}
    "$cmake" -S "$agent" -B "$built" -DCMAKE_PREFIX_PATH="$moved" -DWANTED_VERSION="$version" >/dev/null
    "$cmake" --build "$built"
done
"$scratch/built/c_agent/agent"
"$scratch/built/cxx_agent/with_shared"
"$scratch/built/cxx_agent/with_static"
"$scratch/built/own_headers/in_c"
"$scratch/built/own_headers/in_cpp"
