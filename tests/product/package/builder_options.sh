#!/usr/bin/env bash
# Usage: builder_options.sh CMAKE CURL     in the project's folder; CC is set
#
# CMake respects the options of image builders and the limits of older distributions. CURL is the
# prefix of a libcurl with c-ares, taken for the system's.
. "$(dirname "$0")/../../../script/lib/common.sh"

cmake=$1
curl=$2
make_scratch
exec 2>&1
unset LD_LIBRARY_PATH
prefix=$scratch/prefix
build=$scratch/build
export PKG_CONFIG_PATH=$prefix/lib/pkgconfig:$curl/lib/pkgconfig

# configure FOLDER OPTION...: the output goes to FOLDER.log.
configure() {
    "$cmake" -S . -B "$1" -DBUILD_TESTING=OFF "${@:2}" >"$1.log" 2>&1 || die "$(<"$1.log")"
}

# installed OPTION...: what that configuration installs is in $prefix.
installed() {
    configure "$build" -DCMAKE_BUILD_TYPE=Debug -DCMAKE_INSTALL_LIBDIR=lib "$@"
    rm -rf "$prefix"
    {
        "$cmake" --build "$build" --parallel 2 && "$cmake" --install "$build" --prefix "$prefix"
    } >"$scratch/log" || die "$(<"$scratch/log")"
}

# An agent, linked as pkg-config says, runs when the libraries in $1 are found.
agent_runs() {
    # shellcheck disable=SC2046  # words of a command
    "$CC" -std=c11 $(pkg-config --cflags libcloudagent) tests/product/package/c_api_test.c \
        -o "$scratch/agent" $(pkg-config --libs libcloudagent)
    LD_LIBRARY_PATH=$1 "$scratch/agent" || die 'the agent does not run'
}

echo '== a device build without GoogleTest'
mkdir -p "$scratch"/deps/{lib,include}
touch "$scratch/deps/lib/libcurl.a"
"$cmake" --preset device -B "$scratch/device" -DCLOUD_DEVICE_DEPS="$scratch/deps" \
    -DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON >"$scratch/device.log" 2>&1 || die "$(<"$scratch/device.log")"
grep 'tests are left out: GTest is missing' "$scratch/device.log"
"$cmake" --build "$scratch/device" --target help | grep -x '\.\.\. kdump'

echo '== relocations that the C library cannot process are not packed'
echo 'static int zero; int *volatile pointers[] = {&zero, &zero}; int main(void) { return *pointers[1]; }' \
    >"$scratch/pointers.c"
for compiler in "$CC" musl-gcc; do
    "$cmake" --preset device -B "$scratch/${compiler##*/}" -DCLOUD_DEVICE_DEPS="$scratch/deps" \
        -DBUILD_TESTING=OFF -DCMAKE_C_COMPILER="$(command -v "$compiler")" >"$scratch/log" 2>&1 || die "$(<"$scratch/log")"
    packed=$(grep -o -e -Wl,-z,pack-relative-relocs "$scratch/${compiler##*/}/CMakeFiles/kdump.dir/link.txt") || packed=''
    "$compiler" "$scratch/pointers.c" ${packed:+"$packed"} -o "$scratch/pointers"
    "$scratch/pointers" || die "$compiler $packed: the program ended with status $?"
done

echo "== the system's libcurl, with c-ares and without"
system_curl=(-DCLOUD_SYSTEM_CURL=ON -DCURL_INCLUDE_DIR="$curl/include")
configure "$build" "${system_curl[@]}" -DCURL_LIBRARY="$curl/lib/libcurl.so"
! grep 'c-ares' "$build.log" || die 'it has c-ares, and CMake warns'
"$CC" -shared -fPIC -xc /dev/null -o "$scratch/libcurl.so"
configure "$scratch/without" "${system_curl[@]}" -DCURL_LIBRARY="$scratch/libcurl.so"
grep -q 'built without c-ares' "$scratch/without.log" || die 'it lacks c-ares, and CMake does not warn'

echo "== the system's libcurl: nothing names the private one"
installed
[ ! -e "$prefix/include/cloudagent-curl" ]
[[ $(pkg-config --print-requires libcloudagent) == *libcurl* ]] || die 'the .pc file requires no libcurl'
! grep -E 'rpath|dir}/cloudagent' "$prefix/lib/pkgconfig/libcloudagent.pc" || die 'the .pc file names it'
agent_runs "$prefix/lib:$curl/lib"

echo '== BUILD_SHARED_LIBS=OFF'
installed -DBUILD_SHARED_LIBS=OFF
[ ! -e "$prefix/lib/libcloudagent.so" ] || die 'the shared library is installed'
agent_runs "$curl/lib"
"$cmake" -S examples -B "$scratch/static" -DCMAKE_PREFIX_PATH="$prefix" \
    -DCURL_LIBRARY="$curl/lib/libcurl.so" -DCURL_INCLUDE_DIR="$curl/include" >"$scratch/log"
"$cmake" --build "$scratch/static" >>"$scratch/log" || die "$(<"$scratch/log")"

echo '== BUILD_SHARED_LIBS=ON, CMAKE_SKIP_RPATH=TRUE, with the private libcurl'
installed -DBUILD_SHARED_LIBS=ON -DCMAKE_SKIP_RPATH=TRUE -DCLOUD_SYSTEM_CURL=OFF -DCLOUD_DEPS_DIR="${curl%/*}"
[ ! -e "$prefix/lib/libcloudagent.a" ] || die 'the static library is installed'
ldd "$prefix/sbin/kdump" | grep "$prefix/.*/libcurl.so" || die 'kdump does not find its libcurl'
agent_runs ''

echo '== the fortify level that compiler and C library offer'
level_of() {
    grep -o '_FORTIFY_SOURCE=[0-9]' "$1/CMakeFiles/cloudagent_objects.dir/flags.make"
}
offered=$(echo '#include <features.h>
__USE_FORTIFY_LEVEL' | "$CC" -O2 -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3 -xc -E -P - | tail -n 1)
configure "$scratch/release" "${system_curl[@]}" -DCURL_LIBRARY="$curl/lib/libcurl.so" -DCMAKE_BUILD_TYPE=Release
[ "$(level_of "$scratch/release")" = "_FORTIFY_SOURCE=$offered" ] || die "$(level_of "$scratch/release")"
printf '#!/bin/sh\nexec %s -U__GNUC__ -D__GNUC__=11 "$@"\n' "$CC" >"$scratch/older-gcc"
chmod +x "$scratch/older-gcc"
configure "$scratch/older" "${system_curl[@]}" -DCURL_LIBRARY="$curl/lib/libcurl.so" \
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_C_COMPILER="$scratch/older-gcc"
[ "$(level_of "$scratch/older")" = _FORTIFY_SOURCE=2 ] || die "an older compiler: $(level_of "$scratch/older")"
