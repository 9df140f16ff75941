#!/usr/bin/env bash
# Usage: public_headers.sh HEADER...     CC, CXX, INCLUDE_DIR and CURL_INCLUDE_DIR are set
#
# Every public HEADER can be included alone, from C11 and from C++17, without a warning, and needs no
# folder but INCLUDE_DIR and libcurl's.
set -euo pipefail

for header in "$@"; do
    echo "$header"
    for compiler in "$CC -xc -std=c11" "$CXX -xc++ -std=c++17"; do
        # shellcheck disable=SC2086  # words of a command
        printf '#include <cloudagent/%s>\nextern int nothing;\n' "$header" |
            $compiler -Wall -Wextra -Wpedantic -Werror -I"$INCLUDE_DIR" -isystem "$CURL_INCLUDE_DIR" \
            -fsyntax-only -
    done
done
