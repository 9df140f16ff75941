# Shared by the scripts that build: one preset, quietly unless it fails.
# shellcheck shell=bash disable=SC2154  # project_root is common.sh's

# build_preset PRESET [TARGET...]: configures build/PRESET when that was not done yet, and builds.
build_preset() {
    local preset=$1 folder=$project_root/build/$1 log=$project_root/build/$1.log
    shift
    mkdir -p "$project_root/build"
    if [ ! -f "$folder/Makefile" ]; then
        say "about to build build/$preset (what that prints goes to build/$preset.log)"
        rm -rf "$folder"
        (cd "$project_root" && cmake --preset "$preset") >"$log" 2>&1 || fail_with_log "$log"
    fi
    cmake --build "$folder" --parallel "$(nproc)" ${1:+--target "$@"} >"$log" 2>&1 || fail_with_log "$log"
}

fail_with_log() {
    tail -n 30 "$1" >&2
    die "the build failed, see $1"
}
