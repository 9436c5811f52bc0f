#!/bin/sh
# Rewrites the reference section of docs/sim.md from sysctrl-sim --describe.
set -eu
cd "$(dirname "$0")/.."
sim=${1:-build/bin/sysctrl-sim}
tmp=$(mktemp)
{
    sed -n '1,/^<!-- describe:begin -->$/p' docs/sim.md
    "$sim" --describe
    echo '<!-- describe:end -->'
    sed -n '/^<!-- describe:end -->$/,$p' docs/sim.md | sed '1d'
} > "$tmp"
mv "$tmp" docs/sim.md
