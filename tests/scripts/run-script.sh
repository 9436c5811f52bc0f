#!/bin/sh
# Runs one desk-host script with --json and compares the output with SCRIPT's .expected file.
# A line "# only: KINDS" in the script selects the event kinds compared (see sysctrl-sim --only).
# With UPDATE=1 the expected file is written instead.
set -eu
sim=$1
script=$2
expected=${script%.sim}.expected
only=$(sed -n 's/^# only: *//p' "$script" | head -n 1)
actual=$(mktemp -t sysctrl-script.XXXXXX)
trap 'rm -f "$actual"' EXIT
trap 'exit 1' HUP INT TERM
if [ -n "$only" ]; then
    "$sim" --json --only "$only" "$script" > "$actual" || true
else
    "$sim" --json "$script" > "$actual" || true
fi
if [ "${UPDATE:-0}" = 1 ]; then
    cp "$actual" "$expected"
    exit 0
fi
diff -u "$expected" "$actual"
