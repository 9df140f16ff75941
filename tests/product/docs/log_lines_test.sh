#!/usr/bin/env bash
# Usage: log_lines_test.sh     in the project's folder
#
# docs/log-lines.json names every log text and log id of the sources, and no other. Unit tests or
# scenarios show each id beside its function's name, and each console line of a scenario is one of
# the named lines. A planted line, missing or too many, is noticed.
. script/lib/common.sh

data=docs/log-lines.json
make_scratch

# The sources of folder $1, a statement a line behind its module, without comments.
statements() {
    local module
    for module in "${modules[@]}"; do
        cat "$1/$module"/*.cpp | g++ -x c++ -fpreprocessed -dD -E -P - | tr -s ' \n' ' ' |
            sed -e 's/" "//g' -e 's/;/\n/g' | sed "s/^/$module /"
    done
}

# "MODULE TEXT ID" of each text in a log call or in a table of lines, "-" for an id from elsewhere;
# "- - ID" for the ids of tables and callers: numbers that are neither constants nor sizes.
lines_of_sources() {
    statements "$1" | awk -v OFS='\t' '
        {
            text = "-"
            rest = $0
            if (match($0, /(cloud_log|std::printf)\( ?"([^"\\]|\\.)*"/)) {
                text = substr($0, RSTART, RLENGTH)
                sub(/^[^"]*/, "", text)
                rest = substr($0, RSTART + RLENGTH)
            }
            ids = 0
            bare = $0
            gsub(/"([^"\\]|\\.)*"|[<[=] ?[0-9]+/, "", bare)
            count = split(bare, words, /[^A-Za-z_0-9.]+/)
            for (i = 1; i <= count; i++)
                if (words[i] ~ /^[1-9][0-9]+$/ && words[i] > 20 &&
                    (text != "-" || $1 ~ /^(kdump|cloud_http|device)$/)) {
                    print text == "-" ? "-" : $1, text, words[i]
                    ids++
                }
            if (text != "-" && ids == 0)
                print $1, text, "-"
            while (!/[a-z]printf/ && match(rest, /"([^"\\]|\\.)*"/)) {
                text = substr(rest, RSTART, RLENGTH)
                rest = substr(rest, RSTART + RLENGTH)
                if (text ~ /\\n"$/)
                    print $1, text, "-"
            }
        }' | sort -u
}

lines_of_data() {
    jq -r '.lines[] | [.module, (.text | tojson)] as $line
        | (if .number then [.number] elif .numbers then [.numbers[]] else ["-"] end)[]
        | $line + [tostring] | join("\t")' "$1" | sort -u
}

# Differences between the sources in folder $1 and data file $2.
differences() {
    awk -F '\t' -v OFS='\t' '
        NR == FNR { source[$0]; if ($2 == "-") handed_on[$3]; next }
        {
            data[$0]; texts[$1, $2]; ids[$3]
            if (!($0 in source) &&
                !(($1 OFS $2 OFS "-") in source && ($3 == "-" || $3 in handed_on)))
                print "not in the sources: " $0
        }
        END {
            for (line in source) {
                split(line, part)
                if (!(line in data) && !(part[3] == "-" && (part[1], part[2]) in texts) &&
                    !(part[2] == "-" && part[3] in ids))
                    print "not in '"$data"': " line
            }
        }' <(lines_of_sources "$1") <(lines_of_data "$2")
}

# "STEP OUTCOME KIND PATTERN" for each console line of a run; a text with line ends makes several.
patterns() {
    jq -r '.lines[] | select(.step) | . as $line
        | (.numbers // {"-": .number} | to_entries)[] | (.value | tostring) as $id
        | [$line.step, $line.outcome // "-", (.key | split("[: ]"; null)[0])] as $facts
        | $line.text
        | if $line.function != "" then sub("%s"; $line.function) else . end
        | if $id != "null" then sub("%d"; $id) else . end
        | if $line.value then sub("%s"; $line.value) else . end
        | split("\n")[] | select(. != "") | gsub("(?<c>[][(){}.*+?^$|\\\\])"; "\\" + .c)
        | gsub("%s"; ".*") | gsub("%d"; "-?[0-9]+") | $facts + [.] | join("\t")' "$data" | sort -u
}

# The console lines of all scenarios, but for the inner lines of replies.
console_lines() {
    sed -n '/^== console/,/^== /{/^== /d;/^$/d;p}' virtual_device/scenarios/*.expected |
        sed '/^reply from TFA : {$/,/^}$/{/^reply/!d}'
}

# Lines of another kind than the announced one, and lines of a step that is over. The steps between
# guard and end repeat for each file.
misplaced_lines() {
    awk -F '\t' '
        BEGIN { rank["start"] = 1; rank["announce"] = 2; rank["guard"] = 3; rank["end"] = 5 }
        NR == FNR { steps[$4] = $1; kinds[$4] = kinds[$4] " " $3 " "; next }
        /^###/ { last = 0 }
        /^main [0-9]+ [A-Za-z]+$/ { kind = $0; sub(/.* /, "", kind) }
        {
            for (pattern in steps) {
                if ($0 !~ "^" pattern "$")
                    continue
                now = steps[pattern] in rank ? rank[steps[pattern]] : 4
                if (now < last || kinds[pattern] !~ " (-|" kind ") ")
                    print kind ", " steps[pattern] ": " $0
                last = now
            }
        }' "$scratch/patterns" "$scratch/console"
}

# expect_as_many OUTCOME ANSWERS: as many console lines have that outcome as uploads were answered so.
expect_as_many() {
    local told answered stories
    told=$(grep -cxE -f <(awk -F '\t' -v outcome="$1" '$2 == outcome { print $4 }' "$scratch/patterns") \
        "$scratch/console")
    mapfile -t stories < <(grep -l '^== console' virtual_device/scenarios/*.expected)
    answered=$(awk '/^[0-9]+\. / { put = $2 == "PUT" } put' "${stories[@]}" |
        grep -cxE -- "   -> $2")
    [ "$told" -eq "$answered" ] || die "$told lines tell $1, $answered uploads were answered so"
    say "ok: $told uploads $1"
}

# Log ids that no unit test and no scenario shows behind its function's name.
unproved_ids() {
    local function id
    jq -r '.lines[] | select(.number and .function != "") | "\(.function) \(.number)"' "$data" |
        while read -r function id; do
            grep -rqE "$function\b.{1,8}\b0*$id\b" tests/unit virtual_device/scenarios ||
                echo "$function $id"
        done
}

expect_none() {
    [ -z "$2" ] || die "$1:"$'\n'"$2"
    say "ok: no $1"
}

# plant WHAT FILE SED-EXPRESSION DIFFERENCES: the edit of a copy makes so many differences.
plant() {
    local copy=$scratch/copy found
    rm -rf "$copy"
    mkdir -p "$copy/docs"
    cp -r "${modules[@]}" "$copy"
    cp "$data" "$copy/docs"
    sed -i "$3" "$copy/$2"
    found=$(differences "$copy" "$copy/$data" | wc -l)
    [ "$found" -eq "$4" ] || die "$1: $found differences, expected $4"
    say "ok: noticed $1"
}

expect_none 'difference between sources and data' "$(differences . "$data")"
expect_none 'unproved log id' "$(unproved_ids)"

patterns >"$scratch/patterns"
console_lines >"$scratch/console"
[ "$(wc -l <"$scratch/console")" -gt 2000 ] || die 'too few console lines'
expect_none 'unnamed console line' \
    "$(grep -vxE -f <(cut -f 4 "$scratch/patterns") "$scratch/console" | sort -u)"
expect_none 'misplaced line' "$(misplaced_lines)"
expect_as_many delivered '200(, trickle .*)?'
expect_as_many refused '[45][0-9][0-9]'

plant 'a new line' kdump/main.cpp '$ a void f() { cloud_log("%s %d new\\n", __func__, 7777); }' 1
plant 'a new text' state/credentials.cpp '$ a void f() { cloud_log("new\\n"); }' 1
plant 'two new texts in a statement' kdump/main.cpp \
    '$ a void f() { if (0) cloud_log("one\\n"), cloud_log("two\\n"); }' 2
plant 'a changed text' cloud_http/file_upload.cpp 's/filename %s not found/& here/' 2
plant 'a changed log id' kdump/main.cpp 's/\b1491\b/1492/' 2
plant "a kind's changed log id" kdump/dump_kinds.cpp 's/\b919\b/918/' 2
plant "a caller's changed log id" device/system_status.cpp 's/\b1455\b/1456/' 2
plant 'a changed line of a table' cloud_http/curl_info.cpp 's/CURLINFO_LOCAL_PORT %ld/& /' 2
plant 'a row too few' "$data" 's/"number": 578/"number": 577/' 2
plant "a kind's row too few" "$data" '/"segmentrace": 900/d' 1
plant "a kind's row too many" "$data" 's/"segmentrace": 900,/&"other": 899,/' 1
