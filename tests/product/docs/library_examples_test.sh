#!/usr/bin/env bash
# Usage: library_examples_test.sh CLOUDAGENT CURL VIRTUAL_DEVICE     in the project's folder
#
# The pieces of C in docs/library.md are parts of examples/agent.c, line by line, or whole programs,
# which are compiled, linked with the library CLOUDAGENT and the libcurl CURL, and run on the virtual
# device. The pieces of CMake are parts of examples/CMakeLists.txt. CC, CFLAGS,
# INCLUDE_DIR and CURL_INCLUDE_DIR are used.
. script/lib/common.sh

library=$1
curl=$2
virtual_device=$3
page=docs/library.md
make_scratch

# Writes the pieces of language $1 into scratch files $1.1, $1.2, ...
extract() {
    awk -v language="$1" -v folder="$scratch" '
        inside && /^```$/ { inside = 0 }
        inside { print >(folder "/" language "." count) }
        $0 == "```" language { inside = 1; count++ }' "$page"
}

# Whether the lines of $1 stand in $2 in the same order, one after the other.
is_part_of() {
    [[ $(<"$2") == *"$(<"$1")"* ]]
}

build_and_run() {
    cp "$1" "$scratch/program.c"
    # shellcheck disable=SC2086  # CFLAGS is a list
    "$CC" ${CFLAGS-} -std=c11 -Wall -Wextra -Wpedantic -Werror -I"$INCLUDE_DIR" -I"$CURL_INCLUDE_DIR" \
        "$scratch/program.c" -o "$scratch/program" "$library" "$curl" \
        -Wl,-rpath-link,"${curl%/*}"
    # The device shows the caller's folder.
    (cd "$scratch" && "$virtual_device" run -- \
        env LD_LIBRARY_PATH="${library%/*}:${curl%/*}" "$scratch/program") >"$scratch/story" 2>&1 ||
        die "does not run: $(head -n 5 "$1") $(<"$scratch/story")"
}

extract c
extract cmake
programs=0
for piece in "$scratch"/c.*; do
    if grep -q '^int main' "$piece"; then
        build_and_run "$piece"
        programs=$((programs + 1))
    else
        is_part_of "$piece" examples/agent.c || die "not in examples/agent.c: $(<"$piece")"
    fi
done
[ "$programs" -ge 3 ] || die "only $programs programs found"
for piece in "$scratch"/cmake.*; do
    while read -r line; do
        grep -qxF "$line" examples/CMakeLists.txt || die "not in examples/CMakeLists.txt: $line"
    done <"$piece"
done
say "ok: $(find "$scratch" -name 'c.*' | wc -l) pieces, $programs programs"
