#!/usr/bin/env bash
# Usage: toolchain_names.sh     in the project's folder; CC is set
#
# A toolchain file whose compiler is not named PREFIX-gcc must name the archiver too: without it,
# script/bootstrap stops at once and says what to set; with it, goes on.
. script/lib/common.sh
# shellcheck source=script/lib/device_recipe.sh disable=SC2034
. script/lib/device_recipe.sh

make_scratch
ln -s "$(command -v "$CC")" "$scratch/vendor-cc"
cat >"$scratch/vendor.cmake" <<END
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR $(uname -m))
set(CMAKE_C_COMPILER $scratch/vendor-cc)
END
cd "$scratch"
fetch_debian_source() { die 'too late: sources are fetched'; }

build_device_dependencies "$scratch/deps" "$scratch/vendor.cmake" >log 2>&1 & # where set -e holds
if wait $!; then
    die 'a compiler without an archiver is accepted'
fi
grep -q 'set CMAKE_C_COMPILER_AR and CMAKE_C_COMPILER_RANLIB' <(tr -s ' \n' ' ' <log) || die "$(<log)"

rm -rf facts
printf 'set(CMAKE_C_COMPILER_%s /usr/bin/%s)\n' AR gcc-ar RANLIB gcc-ranlib >>vendor.cmake
read_toolchain "$scratch/vendor.cmake" >log 2>&1 || die "$(<log)"
# shellcheck disable=SC2154  # read_toolchain sets them
[ "$target_ar $target_ranlib" = '/usr/bin/gcc-ar /usr/bin/gcc-ranlib' ] || die "$target_ar $target_ranlib"
say 'ok'
