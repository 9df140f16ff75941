# How much of the shipped code a run of the tests went through. Needs common.sh.
# shellcheck shell=bash disable=SC2154  # project_root is common.sh's

shipped_rooms=(log support state json_parser cloud_http device kdump)
least_lines=99
least_branches=95

# forget_counts BUILD_FOLDER: what earlier runs counted is not this run's.
forget_counts() {
    find "$1" -name '*.gcda' -delete
}

# report_coverage BUILD_FOLDER: a table of the shipped files, each with the lines that no test ran;
# build/coverage.html shows them in place. Fails when less ran than has to.
report_coverage() {
    gcovr --root "$project_root" "${shipped_rooms[@]/#/--filter=}" \
        --html-details "$project_root/build/coverage.html" --txt --txt-metric line \
        --fail-under-line "$least_lines" --fail-under-branch "$least_branches" "$1"
}
