# Who is compared: names in the order of the tables, and what each runs. Needs $build and $here.
# shellcheck shell=bash disable=SC2034,SC2154
rival_names=(device bare_device release bare_system script)
declare -A rival_commands=(
    [device]="$build/device/kdump segmentrace"
    [bare_device]="$build/device/bench/bare_upload"
    [release]="$build/release/kdump segmentrace"
    [bare_system]="$build/device/bench/bare_upload_system"
    [script]="$here/rivals/upload.sh"
)
