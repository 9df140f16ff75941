# How much of the shipped code a run of the tests went through. Needs common.sh.
# shellcheck shell=bash disable=SC2154  # project_root and rooms are common.sh's

least_lines=99
least_branches=95

# forget_counts BUILD_FOLDER: what earlier runs counted is not this run's.
forget_counts() {
    [ ! -d "$1" ] || find "$1" -name '*.gcda' -delete
}

# report_coverage BUILD_FOLDER: a table of the shipped files, each with the lines that no test ran;
# coverage/index.html in the folder shows them, and the branches, in place. Fails when less ran than
# has to; docs/testing.md tells what is known to be left.
report_coverage() {
    mkdir -p "$1/coverage"
    gcovr --root "$project_root" "${rooms[@]/#/--filter=$project_root/}" \
        --html-details "$1/coverage/index.html" --txt --print-summary \
        --fail-under-line "$least_lines" --fail-under-branch "$least_branches" "$1"
}
