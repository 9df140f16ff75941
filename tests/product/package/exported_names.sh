#!/usr/bin/env bash
# Usage: exported_names.sh SHARED STATIC C_API_TEST HEADER...     in the project's folder; CC is set
#
# Both libraries define exactly the names that the public headers declare, but for the static one's
# internals in namespace cloudagent. c_api_test looks at each public name, and every_function.c, which
# tests device builds, calls each function.
. "$(dirname "$0")/../../../script/lib/common.sh"

library=$1
static_library=$2
c_api_test=$3
shift 3
make_scratch

# The compiler itself lists the functions it met, with the file of each.
printf '#include "%s"\n' "$@" >"$scratch/all.c"
"$CC" -std=c11 -I. -I"$CURL_INCLUDE_DIR" -fsyntax-only -aux-info "$scratch/functions" "$scratch/all.c"
{
    sed -nE 's#^/\* \./.*\*/ .*[ *]([A-Za-z0-9_]+) \(.*#\1#p' "$scratch/functions"
    sed -nE 's/^extern [^(]*[ *]([A-Za-z0-9_]+)(\[[^]]*\])?;.*/\1/p' "$@"
} | sort -u >"$scratch/declared"

nm -D --defined-only "$library" | awk '{ print $NF }' | sort -u >"$scratch/exported"
nm -D --undefined-only "$c_api_test" | awk '{ sub(/@.*/, "", $NF); print $NF }' |
    sort -u | comm -12 - "$scratch/exported" >"$scratch/tested"
# Data that a program copies at its start is defined there.
nm -D --defined-only "$c_api_test" | awk '{ sub(/@.*/, "", $NF); print $NF }' |
    sort -u | comm -12 - "$scratch/exported" >>"$scratch/tested"
sort -u -o "$scratch/tested" "$scratch/tested"

echo "$(wc -l <"$scratch/declared") names are declared"
if [ ! -s "$scratch/declared" ]; then
    echo 'the headers could not be read'
    exit 1
fi
diff -u --label declared --label exported "$scratch/declared" "$scratch/exported"

# Weak names too: the linker keeps one of several definitions. A build without optimisation defines
# templates of the standard library, which are everybody's.
nm --defined-only --extern-only "$static_library" | awk 'NF == 3 { print $3 }' |
    grep -vE '^_Z(Z|GV)*N?K?(10cloudagent|St)' | sort -u >"$scratch/in_archive"
c++filt <"$scratch/in_archive" | diff -u --label declared --label archived "$scratch/declared" -
diff -u --label declared --label 'seen by c_api_test' "$scratch/declared" "$scratch/tested"

sed -nE 's/^FUNCTION\([^,]*, (\w+),.*/\1/p' tests/product/package/c_api_test.c | while read -r function; do
    grep -qw -e "$function" -e "${function%_[gs]et}" tests/product/device/every_function.c ||
        { echo "every_function.c does not call $function" && exit 1; }
done
