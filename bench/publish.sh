#!/usr/bin/env bash
# Usage: publish.sh RESULTS DOCS_FOLDER: writes benchmarks.json, the plots, and the figures between
# the markers of benchmarks.md.
set -euo pipefail

results=$1 docs=$2
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

jq -L "$here" 'include "report"; with_ratios' "$results" >"$docs/benchmarks.json"
jq -r -j -L "$here" --rawfile document "$docs/benchmarks.md" 'include "report"; fill($document)' \
    "$results" >"$docs/benchmarks.md.new"
mv "$docs/benchmarks.md.new" "$docs/benchmarks.md"
mkdir -p "$docs/benchmarks"
for plot in $(jq -n -r -L "$here" 'include "plots"; names[]'); do
    jq -r -L "$here" --arg plot "$plot" 'include "plots"; draw($plot)' "$results" \
        >"$docs/benchmarks/$plot.svg"
done
