# The checks of script/lint that understand code. Each fails when it found something.
# shellcheck shell=bash disable=SC2154  # rooms is common.sh's

# The rooms that each room may include; all may include their own, config/ and support/.
declare -A may_include=(
    [support]=''
    [log]=''
    [state]='log'
    [json_parser]='log'
    [cloud_http]='state json_parser log'
    [device]='cloud_http state json_parser log'
    [kdump]='cloud_http state json_parser log'
)

# Those that write without knowing how much fits or read text of any length, those whose result
# for a number out of range is undefined, and those that a second caller disturbs.
banned_functions='v?sprintf|w?strcpy|stpcpy|strcat|strncpy|strncat|gets|strtok|alloca|tmpnam|mktemp|atoi|atol|atoll|atof'

check_format() {
    files '*.c' '*.cpp' '*.h' | xargs clang-format --dry-run -Werror
}

check_shell() {
    # What is sourced is looked at where it is sourced.
    shell_files | xargs shellcheck -x --check-sourced
}

check_rooms() {
    local room
    for room in "${rooms[@]}"; do
        files "$room/*.cpp" "$room/*.h" | xargs grep -Hn '#include "' |
            grep -vE "\"(config|support|$room${may_include[$room]:+|${may_include[$room]// /|}})/" || true
    done | nothing
}

check_banned() {
    {
        shipped_files | xargs grep -nE "\\<($banned_functions)[[:space:]]*\\(" || true
        # A text read without a width, in a call of scanf or in a format that is passed on to one.
        shipped_files | xargs grep -nE '(scanf|read_value).*%(l?s|l?\[)' || true
    } | nothing
}

check_cppcheck() {
    files "${rooms[@]/%//*.cpp}" 'virtual_device/*.cpp' |
        xargs cppcheck --quiet --std=c++17 --language=c++ --library=posix --inline-suppr \
            --enable=warning,performance,portability --error-exitcode=1 -I . \
            -I build/dev/generated -j "$(nproc)"
}

# Without exceptions, C++ is close enough to C for g++ 12's analyzer to follow memory and files
# through it. Its check for uninitialized values is off in C++: there it takes what a constructor or
# a returned structure fills in for uninitialized.
check_analyzer() {
    local flags=(-O1 -fanalyzer -Werror -I. -Ibuild/dev/generated -I.deps/curl/include -c -o /dev/null)
    files "${rooms[@]/%//*.cpp}" | xargs -P "$(nproc)" -I{} g++ -std=c++17 -fno-exceptions -fno-rtti \
        -Wno-analyzer-use-of-uninitialized-value "${flags[@]}" {} &&
        files 'examples/*.c' | xargs -P "$(nproc)" -I{} gcc -std=c11 "${flags[@]}" {}
}

check_tidy() {
    files "${rooms[@]/%//*.cpp}" | xargs -P "$(nproc)" -n 4 clang-tidy -p build/dev --quiet \
        2> >(grep -v ' warnings\? generated' >&2)
}
