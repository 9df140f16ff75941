# The checks of script/lint that read files as texts. Each fails when it found something.
# shellcheck shell=bash

# What may be longer: tables, which are easier to read in one piece. Paths, as patterns.
long_functions=(
    'tests/json_parser/print_test.cpp'  # every rule for printing a number
    'tests/reliability/faulty_calls.cpp' # every system call and its errors
    'tests/torture/*_operations.cpp'     # every public operation
)
long_files=(
    'fuzz/whole_run_fuzz.cpp' # one device, whose parts make sense together only
)

# Functions are looked for where clang-format and the shell scripts' habits put their braces: they
# begin and end in the first column.
long_ones() {
    awk '
        FNR == 1 { start = 0 }
        FNR == 301 { print "file " FILENAME " has more than 300 lines" }
        /^[^ \t#}].*\).*\{$/ { start = FNR }
        /^}/ && start {
            if (FNR - start >= 50)
                print "function " FILENAME ":" start " has " FNR - start + 1 " lines"
            start = 0
        }' "$@"
}

check_length() {
    local sources what place rest pattern allowed
    mapfile -t sources < <(files '*.c' '*.cpp' '*.h' && shell_files)
    long_ones "${sources[@]}" | while read -r what place rest; do
        allowed=("${long_files[@]}")
        [ "$what" = file ] || allowed=("${long_functions[@]}")
        for pattern in "${allowed[@]}"; do
            # shellcheck disable=SC2053  # a pattern
            [[ ${place%:*} != $pattern ]] || continue 2
        done
        printf '%s %s %s\n' "$what" "$place" "$rest"
    done | nothing
}

# Words that the product spells its own way, and names that look like words: sucess, in a log line
# that support knows; messag, a key that lacks its end; statics, kOwn, Nd.
check_spelling() {
    files ':!fuzz/corpus' | xargs codespell --ignore-words-list sucess,messag,statics,kown,nd
}

# The file, the line and the target of every link and picture in the documents given; what stands in
# code is none.
links_in() {
    awk '
        FNR == 1 { code = 0 }
        /^ *```/ { code = !code }
        code || /^    / { next }
        {
            gsub(/`[^`]*`/, "code")
            while (match($0, /\]\([^) ]+|^\[[^]]+\]: *[^ ]+|(src|srcset|href)="[^"]+/)) {
                target = substr($0, RSTART, RLENGTH)
                sub(/^\]\(|^\[[^]]+\]: *|^[a-z]+="/, "", target)
                print FILENAME "\t" FNR "\t" target
                $0 = substr($0, RSTART + RLENGTH)
            }
        }' "$@"
}

# The anchors of a document: those of its headings, as the usual viewers make them, and its own.
anchors_in() {
    awk '
        /^ *```/ { code = !code }
        code { next }
        match($0, /<a (id|name)="[^"]+/) {
            anchor = substr($0, RSTART, RLENGTH)
            sub(/.*"/, "", anchor)
            print anchor
        }
        /^#+ / {
            sub(/^#+ +/, "")
            $0 = tolower($0)
            gsub(/\]\([^)]*\)/, "") # of a link its text
            gsub(/[^a-z0-9 _-]/, "")
            gsub(/ /, "-")
            print $0 (seen[$0]++ ? "-" seen[$0] - 1 : "")
        }' "$1"
}

check_links() {
    local documents file line target path
    mapfile -t documents < <(files '*.md')
    links_in "${documents[@]}" | while IFS=$'\t' read -r file line target; do
        case $target in http://* | https://* | mailto:*) continue ;; esac
        path=${target%%#*}
        path=${path:+$(dirname "$file")/$path}
        path=${path:-$file}
        if [ ! -e "$path" ]; then
            printf '%s:%s: there is no %s\n' "$file" "$line" "$path"
        elif [[ $target == *'#'* ]] && ! anchors_in "$path" | grep -xF -- "${target#*#}" >/dev/null; then
            printf '%s:%s: %s has no heading #%s\n' "$file" "$line" "$path" "${target#*#}"
        fi
    done | nothing
}
