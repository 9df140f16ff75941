#!/usr/bin/env bash
# Usage: man_pages_test.sh VIRTUAL_DEVICE HEADER...     in the project's folder
#
# mandoc finds nothing wrong with the manual pages; kdump(8) names every kind of the table and every
# marker, virtual_device(1) every command and option of the program VIRTUAL_DEVICE, libcloudagent(3)
# every public header.
. script/lib/common.sh

virtual_device=$1
shift
pages=packaging/man

mandoc -T lint -W warning "$pages"/*.[0-9] || die 'mandoc finds something wrong'

# A page as text on one line, with nothing printed bold.
text_of() {
    mandoc -T ascii "$1" | sed 's/.\x08//g' | tr -s ' \n' '  '
}

expect_in() {
    grep -qE -- "$2" <<<"$(text_of "$pages/$1")" || die "$1 lacks: $2"
}

# The words of the rows kind("word", ... of the table.
kinds=$(sed -nE 's/^ *kind\("([A-Za-z]+)".*/\1/p' kdump/dump_kinds.cpp | sort -u)
[ "$(wc -l <<<"$kinds")" -ge 9 ] || die "cannot read the kinds: $kinds"
for kind in $kinds; do
    expect_in kdump.8 "(^| )$kind "
done
expect_in kdump.8 /tmp/kdump_process_

commands=$("$virtual_device" --help | sed -n '/^Subcommands/,$s/^  \([a-z]*\) .*/\1/p')
[ -n "$commands" ] || die 'the program names no commands'
for command in $commands; do
    expect_in virtual_device.1 " $command "
    for option in $("$virtual_device" "$command" --help | grep -oE '^  (-h,)?--[a-z-]+' | sed 's/.*--//'); do
        expect_in virtual_device.1 "--$option"
    done
done

for header in "$@"; do
    [ "$header" = base/c_api.h ] || expect_in libcloudagent.3 "<cloudagent/$header>"
done
say 'ok'
