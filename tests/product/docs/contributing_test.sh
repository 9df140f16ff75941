#!/usr/bin/env bash
# Usage: contributing_test.sh GENERATED VIRTUAL_DEVICE     in the project's folder
#
# Follows the worked examples of CONTRIBUTING.md to the letter on a copy of the sources; the compiler
# checks every file touched, and the example's scenario runs. GENERATED holds the generated headers.
# Uses CC, CXX and CURL_INCLUDE_DIR.
#
# A marker before each piece of code tells its place: "<!-- piece: FILE -->" for a new file,
# "<!-- piece: FILE after: TEXT -->" for lines behind the first line of FILE that holds TEXT.
. script/lib/common.sh

generated=$1
virtual_device=$2
make_scratch
copy=$scratch
find "${modules[@]}" tests testing virtual_device \
    \( -name '*.h' -o -name '*.c' -o -name '*.cpp' \) -exec cp --parents -t "$copy" {} +
ln -s . "$copy/cloudagent" # <cloudagent/log/log.h> is the copy's log/log.h

# Writes the pieces, without the blanks they are indented by, to $copy/1, $copy/2, …, and their
# markers, a line each.
pieces() {
    awk -v folder="$copy" '
        /^ *<!-- piece: .* -->$/ { gsub(/^ *<!-- piece: | -->$/, ""); marker = $0 }
        /^ *```$/ { inside = 0 }
        inside { print substr($0, indent + 1) >(folder "/" count) }
        /^ *```[a-z]+$/ { indent = index($0, "`") - 1; inside = 1; count++; print marker; marker = "" }
    ' CONTRIBUTING.md
}

# Puts piece $1 into file $2 behind the first line that holds $3; without $3 it is the file. Whoever
# follows an example has it there already.
add() {
    local piece=$copy/$1 file=$copy/$2
    if [ -z "$3" ]; then
        mkdir -p "${file%/*}"
        cp "$piece" "$file"
    elif ! grep -qF -- "$(grep -m 1 . "$piece")" "$file"; then
        grep -qF -- "$3" "$file" || die "$2 has no line with: $3"
        sed -i "$(grep -nF -m 1 -- "$3" "$file" | cut -d : -f 1)r $piece" "$file"
    fi
}

compile() {
    local compiler=("$CXX" -std=c++17)
    [[ $1 == *.cpp ]] || compiler=("$CC" -std=c11)
    "${compiler[@]}" -fsyntax-only -Wall -Wextra -Werror -I"$copy" -I"$copy/tests" \
        -I"$copy/virtual_device" -I"$generated" -I"$CURL_INCLUDE_DIR" "$copy/$1" ||
        die "$1 does not compile with what CONTRIBUTING.md adds"
    say "ok: $1"
}

mapfile -t markers < <(pieces)
for ((piece = 1; piece <= ${#markers[@]}; piece++)); do
    IFS=$'\t' read -r file place <<<"${markers[piece - 1]/ after: /$'\t'}"
    [ -n "$file" ] || die "piece $piece has no marker: $(<"$copy/$piece")"
    add "$piece" "$file" "$place"
    files+=("$file")
done
[ "${#markers[@]}" -ge 10 ] || die "found only ${#markers[@]} pieces"

for file in $(printf '%s\n' "${files[@]}" | grep '\.c' | sort -u); do
    compile "$file"
done
for file in $(printf '%s\n' "${files[@]}" | grep '\.json$'); do
    (cd "$copy" && "$virtual_device" run --scenario "$copy/$file") >"$copy/story" 2>&1 || true
    grep -q '503' "$copy/story" || die "$file does not run: $(<"$copy/story")"
    say "ok: $file"
done
