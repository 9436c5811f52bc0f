#!/bin/sh
# docs/sim.md carries the reference of the simulated objects as sysctrl-sim --describe prints it.
set -eu
sim=$1
doc=$2
documented=$(mktemp -t sysctrl-sim-doc.XXXXXX)
described=$(mktemp -t sysctrl-sim-doc.XXXXXX)
trap 'rm -f "$documented" "$described"' EXIT
trap 'exit 1' HUP INT TERM
sed -n '/^<!-- describe:begin -->$/,/^<!-- describe:end -->$/p' "$doc" | sed '1d;$d' > "$documented"
"$sim" --describe > "$described"
diff -u "$documented" "$described" || {
    echo "docs/sim.md is out of date: replace its describe section with sysctrl-sim --describe" >&2
    exit 1
}
