# Shared by the scripts in script/: where things are, and how a script says what it does.
# shellcheck shell=bash

project_root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
# shellcheck disable=SC2034  # for the scripts that read this
deps_dir=$project_root/.deps

say() {
    printf '%s: %s\n' "${0##*/}" "$*"
}

# The folders of the shipped code; each may include from those before it, see lint_code.sh.
# shellcheck disable=SC2034
rooms=(support log state json_parser cloud_http device kdump)

die() {
    printf '%s: %s\n' "${0##*/}" "$*" >&2
    exit 1
}

# Prints the comment block at the top of the calling script, without its "#!" line.
print_help() {
    awk 'NR == 1 { next } !/^#/ { exit } { sub(/^# ?/, ""); print }' "$0"
}

# Runs a command as root: directly when it is root who calls, else through sudo.
as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        die "this takes root, and there is no sudo: $*"
    fi
}
