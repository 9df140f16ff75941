# The preamble of every script in script/: strict mode, --help, paths, messages, packages, builds.
# shellcheck shell=bash
set -euo pipefail

# The calling script's opening comment, without the "#!" line, is its help.
if [ "${1-}" = --help ]; then
    awk 'NR == 1 { next } !/^#/ { exit } { sub(/^# ?/, ""); print }' "$0"
    exit
fi

project_root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
# shellcheck disable=SC2034  # for the scripts that read these
deps_dir=$project_root/.deps modules=(base log state json_parser cloud_http device kdump)

say() {
    printf '%s: %s\n' "${0##*/}" "$*"
}

die() {
    say "$@" >&2
    exit 1
}

# Makes the folder $scratch, which is removed when the script ends.
make_scratch() {
    scratch=$(mktemp -d)
    trap 'rm -rf "$scratch"' EXIT
}

# quietly LOG COMMAND...: the command's output goes to LOG; a failure shows its end and exits.
quietly() {
    "${@:2}" >"$1" 2>&1 || {
        tail -n 30 "$1" >&2
        die "failed, see $1: ${*:2}"
    }
}

# Runs a command as root, through sudo for ordinary users.
as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        die "this needs root, and there is no sudo: $*"
    fi
}

# Installs those of the Debian packages that are missing.
install_packages() {
    local missing
    mapfile -t missing < <(comm -13 \
        <(dpkg-query -W -f '${db:Status-Status} ${Package}\n' | sed -n 's/^installed //p' | sort -u) \
        <(printf '%s\n' "$@" | sort -u))
    [ "${#missing[@]}" -gt 0 ] || return 0
    say "installing with apt-get: ${missing[*]}"
    as_root apt-get -qq -o DPkg::Lock::Timeout=300 update
    as_root env DEBIAN_FRONTEND=noninteractive apt-get -qq -y -o DPkg::Lock::Timeout=300 \
        -o Dpkg::Use-Pty=0 --no-install-recommends install "${missing[@]}"
}

# build_preset PRESET [TARGET...]: builds in build/PRESET; configures it the first time.
build_preset() {
    configure "$1" --preset "$1"
    build_folder "$@"
}

# build_device TARGET [BUILD-TARGET...]: builds a device's program; TARGET is one of script/bootstrap's.
# Sets device_folder to the folder's name in build/.
build_device() {
    device_folder=device-$(basename "$1" .cmake)
    case $1 in
    *.cmake) configure "$device_folder" --preset device --toolchain "$(realpath "$1")" ;;
    native) device_folder=device && configure device --preset device ;;
    *) configure "$device_folder" --preset "$device_folder" ;;
    esac
    build_folder "$device_folder" "${@:2}"
}

configure() {
    local folder=$project_root/build/$1
    [ ! -f "$folder/Makefile" ] || return 0
    say "building build/$1 (output in build/$1.log)"
    rm -rf "$folder"
    mkdir -p "$project_root/build"
    quietly "$folder.log" cmake -S "$project_root" "${@:2}" -B "$folder"
}

build_folder() {
    local folder=$project_root/build/$1
    quietly "$folder.log" cmake --build "$folder" --parallel "$(nproc)" ${2:+--target "${@:2}"}
}
