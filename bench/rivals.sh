# The rivals in the order of the tables, and the command of each. Needs $build.
# shellcheck shell=bash disable=SC2034,SC2154
rival_names=(device bare_device release bare_system script)
declare -A rival_commands=(
    [device]="$build/device/kdump segmentrace"
    [bare_device]="$build/device/bench/bare_upload"
    [release]="$build/release/kdump segmentrace"
    [bare_system]="$build/device/bench/bare_upload_system"
    [script]="$(realpath "$(dirname "${BASH_SOURCE[0]}")")/rivals/upload.sh"
)
