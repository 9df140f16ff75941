#!/usr/bin/env bash
# Usage: budget_test.sh size KDUMP | memory KDUMP VIRTUAL_DEVICE MEASURE SCRATCH_FILE
#
# A device has little flash and little memory: the program may not outgrow what it was given, the
# peak memory of a whole upload neither. Three percent more is taken for noise.
set -euo pipefail

most_bytes=3200000
most_memory=5000000

within() {
    local what=$1 bytes=$2 budget=$3
    echo "$what: $bytes bytes, $budget allowed"
    [ "$bytes" -gt 0 ] && [ $((bytes * 100)) -le $((budget * 103)) ]
}

kdump=$2
case $1 in
size)
    within "the program" "$(stat -c %s "$kdump")" "$most_bytes"
    ;;
memory)
    virtual_device=$3 measure=$4 record=$5
    rm -f "$record"
    "$virtual_device" run --kdump "$kdump" -- "$measure" "$record" kdump segmentrace
    within "the peak memory of a run" $(($(sed 's/.*"peak_kb": \([0-9]*\).*/\1/' "$record") * 1024)) \
        "$most_memory"
    ;;
esac
