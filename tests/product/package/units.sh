#!/usr/bin/env bash
# Usage: units.sh     in the project's folder
#
# What starts the program in the field, staged as the package installs it: systemd accepts every unit;
# a service's exposure stays low, and its comments name whatever is not hardened. Crontab and OpenWrt's
# init script have all the kinds that path units have.
set -euo pipefail

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
units=$scratch/lib/systemd/system
mkdir -p "$units"
cp /lib/systemd/system/*.target "$units"
while read -r from to; do
    mkdir -p "$scratch/${to:-none}"
    # shellcheck disable=SC2086  # a pattern
    [ -z "$to" ] || cp -p $from "$scratch/$to"
done <debian/cloudagent-kdump.install

echo '== systemd-analyze verify'
mapfile -t kinds < <(basename -as .path "$units"/*.path | sed 's/^cloudagent-kdump-//')
names=("${kinds[@]/#/cloudagent-kdump-}") instances=("${kinds[@]/#/cloudagent-kdump@}" cloudagent-kdump@RAM)
systemd-analyze verify --man=no --root="$scratch" "${names[@]/%/.path}" "${instances[@]/%/.service}" \
    "${instances[@]/%/.timer}" >"$scratch/said" 2>&1 || echo "status $?" >>"$scratch/said"
if grep . "$scratch/said"; then exit 1; fi

echo '== systemd-analyze security'
service=cloudagent-kdump@segmentrace.service
security=(systemd-analyze security --offline=true --no-pager --root="$scratch")
"${security[@]}" --threshold=21 "$service" | grep -v '^✓'
"${security[@]}" --json=short "$service" | jq -r '.[] | select(.set == false).name' | cut -d = -f 1 | sort -u |
    while read -r name; do
        grep -q "^#.*\b$name\b" "$units/cloudagent-kdump@.service" || { echo "no reason given: $name" && exit 1; }
    done

echo '== crontab and init script'
line=$(grep -v '^#' packaging/run/cloudagent-run.crontab)
[[ $line =~ ^([0-9,]+|\*)( \*){4}" for kind in "(.*) ]]
sh -n <<<"${line#* \* \* \* \* }"
for kind in "${kinds[@]}"; do
    grep -qw "$kind" <<<"$line"
    grep -qw "$kind" packaging/run/cloudagent-run.init
done
