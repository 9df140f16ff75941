# Shared by the scripts that build: one preset, quietly unless it fails.
# shellcheck shell=bash disable=SC2154  # project_root is common.sh's

# build_preset PRESET [TARGET...]: configures build/PRESET when that was not done yet, and builds.
build_preset() {
    configure "$1" --preset "$1"
    build_folder "$@"
}

# build_device TARGET [BUILD-TARGET...]: the device build for this machine (native), for one of the
# architectures that have a preset, or with a toolchain file. Sets device_folder to the name of its
# folder in build/.
build_device() {
    local target=$1
    shift
    case $target in
    native) device_folder=device ;;
    *.cmake) device_folder=device-$(basename "$target" .cmake) ;;
    *) device_folder=device-$target ;;
    esac
    case $target in
    *.cmake) configure "$device_folder" --preset device --toolchain "$(realpath "$target")" ;;
    *) configure "$device_folder" --preset "$device_folder" ;;
    esac
    build_folder "$device_folder" "$@"
}

configure() {
    local name=$1 log=$project_root/build/$1.log
    shift
    mkdir -p "$project_root/build"
    [ ! -f "$project_root/build/$name/Makefile" ] || return 0
    say "about to build build/$name (what that prints goes to build/$name.log)"
    rm -rf "$project_root/build/$name"
    (cd "$project_root" && cmake "$@" -B "build/$name") >"$log" 2>&1 || fail_with_log "$log"
}

build_folder() {
    local folder=$project_root/build/$1 log=$project_root/build/$1.log
    shift
    cmake --build "$folder" --parallel "$(nproc)" ${1:+--target "$@"} >"$log" 2>&1 || fail_with_log "$log"
}

fail_with_log() {
    tail -n 30 "$1" >&2
    die "the build failed, see $1"
}
