#!/usr/bin/env bash
# Usage: exported_names.sh LIBRARY C_API_TEST HEADER...     in the project's folder; CC is set
#
# The shared library exports exactly the names that the public headers declare, and c_api_test
# looks at each of them.
set -euo pipefail

library=$1
c_api_test=$2
shift 2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

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
diff -u --label declared --label 'seen by c_api_test' "$scratch/declared" "$scratch/tested"
