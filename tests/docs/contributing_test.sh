#!/usr/bin/env bash
# Usage: contributing_test.sh GENERATED VIRTUAL_DEVICE     in the project's folder
#
# Carries the worked examples of CONTRIBUTING.md out on a copy of the sources, piece by piece and to
# the letter, and lets the compiler check every file touched; their scenario has to run. GENERATED
# holds the generated headers. CC, CXX and CURL_INCLUDE_DIR are used.
set -euo pipefail

# shellcheck source=script/lib/common.sh
. script/lib/common.sh

generated=$1
virtual_device=$2
copy=$(mktemp -d)
trap 'rm -rf "$copy"' EXIT
find kdump state device cloud_http json_parser log support tests virtual_device \
    \( -name '*.h' -o -name '*.c' -o -name '*.cpp' \) -exec cp --parents -t "$copy" {} +
pieces=$copy/pieces
mkdir "$pieces"

# The pieces of code, without the blanks they are indented by, numbered from 1.
awk -v folder="$pieces" '
    /^ *```$/ { inside = 0 }
    inside { print substr($0, indent + 1) >(folder "/" count) }
    /^ *```[a-z]+$/ { indent = index($0, "`") - 1; inside = 1; count++ }' CONTRIBUTING.md

# Puts piece $1, which begins with $2, behind the first line of file $3 that holds $4. Whoever follows
# an example has it there already.
insert() {
    local piece=$pieces/$1 begin=$2 file=$copy/$3 place=$4 first
    read -r first <"$piece"
    [[ $first == "$begin"* ]] || die "piece $1 begins with $first, not with $begin"
    ! grep -qF -- "$first" "$file" || return 0
    grep -qF -- "$place" "$file" || die "$3 has no line with: $place"
    awk -v piece="$piece" -v place="$place" '
        { print }
        !done && index($0, place) { while ((getline line <piece) > 0) print line; done = 1 }
    ' "$file" >"$file.new"
    mv "$file.new" "$file"
}

compile() {
    local compiler=$CXX standard=c++17
    [[ $1 == *.cpp ]] || compiler=$CC standard=c11
    "$compiler" -std=$standard -fsyntax-only -Wall -Wextra -Werror -I"$copy" -I"$copy/tests" \
        -I"$copy/virtual_device" -I"$generated" -I"$CURL_INCLUDE_DIR" \
        "$copy/$1" || die "$1 does not compile with what CONTRIBUTING.md adds"
    say "ok: $1"
}

insert 1 'constexpr DumpFile crashdump' kdump/dump_kinds.cpp 'constexpr DumpFile flash_log_plain'
insert 2 '{"crashdump"' kdump/dump_kinds.cpp '{"CONFIG", nullptr'
compile kdump/dump_kinds.cpp
insert 3 'staged("crashdump"' tests/reliability/kinds.cpp 'configuration(""),'
compile tests/reliability/kinds.cpp
insert 4 'contest_of(' tests/races/contest.cpp 'contest_of({"CONFIG ALL", "CONFIG network.conf"})'
compile tests/races/contest.cpp

insert 5 '/* Report interval' state/state_files.h 'api_checkin_interval_set('
insert 6 '#define REPORT_INTERVAL' state/state_files.cpp '#define CHECKIN_INTERVAL'
insert 7 'NUMBER_GETTER(' state/state_files.cpp 'NUMBER_SETTER(api_checkin_interval_set'
compile state/state_files.cpp
insert 8 '{"api_report_interval_get"' tests/state/accessors.cpp 'vector<NumberGetter> rows = {'
insert 9 '{"api_report_interval_set"' tests/state/accessors.cpp 'vector<NumberSetter> rows = {'
compile tests/state/accessors.cpp
insert 10 'ROW(' tests/torture/state_operations.cpp 'ROW(number_setter, api_checkin_interval_set'
compile tests/torture/state_operations.cpp
insert 11 'FUNCTION(' tests/c_api_test.c '/* state/state_files.h */'
compile tests/c_api_test.c

cp "$pieces/12" "$copy/device/temperature.h"
cp "$pieces/13" "$copy/device/temperature.cpp"
cp "$pieces/15" "$copy/tests/device/temperature_test.cpp"
compile device/temperature.cpp
compile tests/device/temperature_test.cpp
insert 14 'resources_[' virtual_device/local_service.cpp 'resources_[kProxy] = '
compile virtual_device/local_service.cpp
insert 16 '{"/api/system/temperature"' tests/torture/peers.cpp 'kResources = {'
compile tests/torture/peers.cpp
insert 17 '{"sn_get_temperature"' tests/torture/device_operations.cpp '{"1, figures", "0, untouched"}},'
sed -i '1i #include "device/temperature.h"' "$copy/tests/torture/device_operations.cpp"
compile tests/torture/device_operations.cpp

cp "$pieces/18" "$copy/scenario.json"
(cd "$copy" && "$virtual_device" run --scenario "$copy/scenario.json") >"$copy/story" 2>&1 || true
grep -q '503' "$copy/story" || die "the scenario does not run: $(<"$copy/story")"
say 'ok: the scenario'
