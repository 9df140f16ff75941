#!/usr/bin/env bash
# Usage: publish.sh RESULTS DOCS_FOLDER: writes benchmarks.json, the figures between the markers of
# benchmarks.md, and the plots.
set -euo pipefail

results=$1 docs=$2
here=$(dirname "$0")
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# report [OPTION...] FILTER
report() {
    jq -L "$here" "${@:1:$#-1}" "include \"report\"; ${*: -1}" "$results"
}

report with_ratios >"$scratch/json"
# shellcheck disable=SC2016  # jq's variable
report -rj --rawfile document "$docs/benchmarks.md" 'fill($document)' >"$scratch/md"
report -r plot_data >"$scratch/plots"
mkdir -p "$docs/benchmarks"
gnuplot -e "data = '$scratch/plots'; folder = '$docs/benchmarks/'" "$here/plots.gp"
cp "$scratch/json" "$docs/benchmarks.json"
cp "$scratch/md" "$docs/benchmarks.md"
