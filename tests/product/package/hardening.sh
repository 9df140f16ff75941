#!/usr/bin/env bash
# Usage: hardening.sh CONFIGURATION RUN_PATH FILE...     CC, READELF and, for static programs, OBJECTS
#                                                        (what they are linked from) are set
#
# Every FILE, a program or a shared library, makes life hard for whoever finds a hole in it, and looks
# for libraries in RUN_PATH (empty: in none) beside the system's folders. A program built here without
# any of this shows that each of the checks can fail.
# shellcheck disable=SC2317  # failures calls what it is given
. "$(dirname "$0")/../../../script/lib/common.sh"

configuration=$1
run_path=$2
shift 2
make_scratch

# A file's tables, as readelf prints them.
headers() { "$READELF" -hW "$1"; }
segments() { "$READELF" -lW "$1"; }
dynamic() { "$READELF" -dW "$1"; }
symbols() {
    if has dynamic NEEDED "$1"; then
        "$READELF" --dyn-syms -W "$1"
    else
        "$READELF" --syms -W "$OBJECTS"
    fi
}
has() { "$1" "$3" | grep -E "$2" >/dev/null; }

position_independent() { has headers 'Type: +DYN' "$1"; }
relocations_read_only() { has segments GNU_RELRO "$1" && has dynamic 'FLAGS.*NOW' "$1"; }
guarded_stack_frames() { has symbols 'UND __stack_chk_fail' "$1"; }
checked_libc_calls() { has symbols 'UND __[a-z]+_chk(@|$)' "$1"; }
no_executable_stack() { has segments 'GNU_STACK.* RW +0x' "$1"; }
no_other_run_path() {
    local found
    found=$(dynamic "$1" | sed -nE 's/.*\((RPATH|RUNPATH)\).*\[(.*)\]/\2/p')
    # Until it is installed, CMake keeps room for the later path with colons at the end.
    shopt -s extglob
    [ "${found%%+(:)}" = "$run_path" ] || { echo "        its run path is \"$found\"" && return 1; }
}

checks=(position_independent relocations_read_only guarded_stack_frames no_executable_stack
    no_other_run_path)
if [ "$configuration" = Release ]; then
    checks+=(checked_libc_calls)
fi

# Prints the names of the checks that file $1 fails.
failures() {
    local check
    for check in "${checks[@]}"; do
        "$check" "$1" >&2 || echo "$check"
    done
}

status=0
for file in "$@"; do
    failed=$(failures "$file")
    echo "${file##*/}: ${failed:-all of ${checks[*]}}"
    [ -z "$failed" ] || status=1
done

cat >"$scratch/soft.c" <<'END'
#include <stdio.h>
int main(int argc, char **argv) {
    char text[16];
    sprintf(text, "%d%p", argc, (void *)argv);
    return puts(text);
}
END
"$CC" -w -O1 -fno-stack-protector -U_FORTIFY_SOURCE -fno-pie -no-pie -Wl,-z,norelro,-z,lazy \
    -Wl,-z,execstack -Wl,-rpath,/somewhere "$scratch/soft.c" -o "$scratch/soft"
seen=$(failures "$scratch/soft" 2>/dev/null)
for check in "${checks[@]}"; do
    if ! grep -qx "$check" <<<"$seen"; then
        echo "$check finds nothing wrong with a program built without it"
        status=1
    fi
done
exit $status
