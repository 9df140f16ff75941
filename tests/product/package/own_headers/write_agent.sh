#!/usr/bin/env bash
# Usage: write_agent.sh FOLDER HEADER...     in the project's folder
#
# Writes an agent that has a header of its own by the name of every public HEADER and includes both.
# It compiles only if "log/log.h" is its own and <cloudagent/log/log.h> the library's, and so on.
set -euo pipefail

folder=$1
shift
for header in "$@"; do
    mkdir -p "$folder/${header%/*}"
    echo "enum { own_${header//[\/.]/_} = 1 };" >"$folder/$header"
done
{
    printf '#include "%s"\n' "$@"
    printf '#include <cloudagent/%s>\n' "$@"
    printf 'enum { all_own = 0'
    for header in "$@"; do
        printf ' + own_%s' "${header//[\/.]/_}"
    done
    printf ' };\n'
    cat tests/product/package/c_api_test.c # uses every name of the library
} >"$folder/agent.c"
cp "$folder/agent.c" "$folder/agent.cpp"
