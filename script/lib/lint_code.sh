# The checks of script/lint that understand code.
# shellcheck shell=bash disable=SC2154  # modules is common.sh's

# What each folder may include beside its own files and deployment.h. Tests and fuzz targets may
# include every module, their own folder and the tools they test, but no other test's folder.
declare -A may_include=(
    [base]=''
    [log]='base'
    [state]='base log'
    [json_parser]='base log'
    [cloud_http]='base log state json_parser'
    [device]='base log state json_parser cloud_http'
    [kdump]='base log state json_parser cloud_http'
    [testing]='base log'
    [virtual_device]='testing'
    [examples]=''
    [bench]="${modules[*]} testing"
    [fuzz]="${modules[*]} testing"
    [tests]="${modules[*]} testing virtual_device tests/faults tests/faults/memory tests/faults/syscalls tests/product/package"
)

# Functions without a bound, with undefined results for numbers out of range, or with shared state.
banned_functions='v?sprintf|w?strcpy|stpcpy|strcat|strncpy|strncat|gets|strtok|alloca|tmpnam|mktemp|atoi|atol|atoll|atof'

banned_headers='[a-z]*stream(buf)?|ios|locale|basic_string\.h|vector|map|functional'

check_format() {
    files '*.c' '*.cpp' '*.h' | xargs clang-format --dry-run -Werror
}

check_shell() {
    shell_files | xargs shellcheck -x --check-sourced
}

check_includes() {
    local folder allowed
    {
        for folder in "${!may_include[@]}"; do
            allowed=${may_include[$folder]}
            [ "$folder" = tests ] || allowed+=" $folder"
            files "$folder/*.c" "$folder/*.cpp" "$folder/*.h" | xargs grep -Hn '#include "' |
                grep -vE "#include \"((\.\./)?(${allowed// /|})/)?[a-z0-9_]+\.[ch]\"" || true
        done
    } | nothing
}

# What has one place: patterns, and the files that may match them.
check_single() {
    local forks='(fork|vfork|posix_spawnp?|exec[lv]p?e?)\(' servers='(accept4?|listen)\('
    local interceptions='__(wrap|real|libc)_'
    {
        only_in "$forks" 'testing/(spawn|private_world|no_sleep)|bench/|tests/faults/memory/'
        only_in "$servers" 'testing/http_server'
        only_in "$interceptions" 'testing/(calls|failing_memory)'
    } | nothing
}

only_in() {
    files '*.cpp' '*.h' '*.c' | xargs grep -nE "(^|[^_[:alnum:].>])$1" | grep -vE "^($2)|//" || true
}

check_banned() {
    {
        shipped_files | xargs grep -nE "\\<($banned_functions)[[:space:]]*\\(" || true
        # A text conversion without a width, in a call of scanf or a format passed on to one.
        shipped_files | xargs grep -nE 'scanf.*%(l?s|l?\[)' || true
        # Streams, locales and containers throw and make the program larger. Others include them too.
        for file in $(files "${modules[@]/%//*.cpp}"); do
            g++ -std=c++17 -M -MG -I. -I.deps/curl/include "$file" | tr ' ' '\n' |
                grep -E "/c\+\+/.*/($banned_headers)$" | sed "s|^|$file: |" || true
        done
    } | nothing
}

check_cppcheck() {
    files "${modules[@]/%//*.cpp}" 'virtual_device/*.cpp' |
        xargs cppcheck --quiet --std=c++17 --language=c++ --library=posix --inline-suppr \
            --enable=warning,performance,portability --error-exitcode=1 -I . \
            -I build/dev/generated -j "$(nproc)"
}

check_clang() {
    files "${modules[@]/%//*.cpp}" | xargs -P "$(nproc)" -I{} clang++ -std=c++17 -fno-exceptions -fno-rtti -O1 \
        -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -I. -Ibuild/dev/generated \
        -Ibuild/dev/include -I.deps/curl/include -c -o /dev/null {}
}

# g++ 12's analyzer follows memory and files through C++ without exceptions. Its check for
# uninitialized values is off: it takes members that a constructor sets for uninitialized.
check_analyzer() {
    local flags=(-O1 -fanalyzer -Werror -I. -Ibuild/dev/generated -Ibuild/dev/include
        -I.deps/curl/include -c -o /dev/null)
    files "${modules[@]/%//*.cpp}" | xargs -P "$(nproc)" -I{} g++ -std=c++17 -fno-exceptions -fno-rtti \
        -Wno-analyzer-use-of-uninitialized-value "${flags[@]}" {} &&
        files 'examples/*.c' | xargs -P "$(nproc)" -I{} gcc -std=c11 "${flags[@]}" {}
}

check_tidy() {
    files "${modules[@]/%//*.cpp}" | xargs -P "$(nproc)" -n 4 clang-tidy -p build/dev --quiet \
        2> >(grep -v ' warnings\? generated' >&2)
}
