#!/usr/bin/env bash
# Usage: api_reference_test.sh HEADER...     in the project's folder
#
# script/docs builds a reference with every function and variable of the public headers. It fails when
# a symbol is undocumented, and when a picture, a figure of the README or a log line is out of date.
# Works on a copy.
. script/lib/common.sh

make_scratch
copy=$scratch
cp -r --parents CMakeLists.txt README.md script packaging docs log_reader "$@" "$copy"

expect_failure() {
    if "$copy/script/docs" --check >"$copy/output" 2>&1; then
        die "not noticed: $1"
    fi
    grep -q "$2" "$copy/output" || die "$1 is reported as: $(<"$copy/output")"
    say "ok: noticed $1"
}

# The names that the headers declare: the last name before "(" or ";" of each line that ends a declaration.
declared_names() {
    cat "$@" | sed -nE -e 's/^(extern [^;]*[ *])([A-Za-z_0-9]+)(\[.*)?;.*/\2/p' \
        -e 's/^[a-zA-Z][^(;=]*[ *]([A-Za-z_0-9]+)\(.*/\1/p'
}

"$copy/script/docs" --check
names=$(declared_names "$@" | sort -u)
[ "$(wc -l <<<"$names")" -gt 100 ] || die "found too few names: $names"
for name in $names; do
    grep -rqE ">$name<" "$copy/build/docs/html" || die "the reference lacks $name"
done
say "ok: $(wc -l <<<"$names") names"

sed -i '/^\/\/\/ The number of elements or members/d' "$copy/json_parser/json_parser.h"
expect_failure 'a function without a description' 'getJsonArraySize.*is not documented'
cp json_parser/json_parser.h "$copy/json_parser/"
sed -i 's|    uint32_t total_kb;.*|    uint32_t total_kb;|' "$copy/device/system_status.h"
expect_failure 'a field without a description' 'total_kb.*is not documented'
cp device/system_status.h "$copy/device/"
echo '// more' >>"$copy/docs/device-and-cloud.dot"
expect_failure 'an old picture' 'device-and-cloud.svg is not up to date'
"$copy/script/docs" >/dev/null
sed -i '/^<!-- figures: .* columns /a | kdump | 0.1 |' "$copy/README.md"
expect_failure 'an invented figure' 'README.md is not up to date'
"$copy/script/docs" >/dev/null
sed -i 's/already processing/already at work/' "$copy/docs/log-lines.json"
expect_failure 'an old log reference' 'docs/log-reference.md is not up to date'
