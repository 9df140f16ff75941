#!/usr/bin/env bash
# Usage: budget_test.sh size BUDGET KDUMP | memory BUDGET KDUMP VIRTUAL_DEVICE MEASURE SCRATCH_FILE
#
# A device has little flash and little memory: the program may not outgrow what it was given, the
# peak memory of a whole upload neither. Three percent more is taken for noise.
set -euo pipefail

budget=$2
kdump=$3

within() {
    local what=$1 bytes=$2
    echo "$what: $bytes bytes, $budget allowed"
    [ "$bytes" -gt 0 ] && [ $((bytes * 100)) -le $((budget * 103)) ]
}

case $1 in
size)
    within "the program" "$(stat -c %s "$kdump")"
    ;;
memory)
    virtual_device=$4 measure=$5 record=$6
    rm -f "$record"
    "$virtual_device" run --kdump "$kdump" -- "$measure" "$record" kdump segmentrace
    within "the peak memory of a run" $(($(sed 's/.*"peak_kb": \([0-9]*\).*/\1/' "$record") * 1024))
    ;;
esac
