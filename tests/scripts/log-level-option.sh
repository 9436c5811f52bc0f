#!/bin/sh
# --log-level takes a whole number from 0 to 65535; anything else is a bad command line (exit
# status 2, a message naming the option), never a silent threshold of 0.
# usage: log-level-option.sh [EMULATOR...] SYSCTRL_SIM
set -eu
out=$(mktemp -t sysctrl-log-level.XXXXXX)
trap 'rm -f "$out"' EXIT
trap 'exit 1' HUP INT TERM
for level in 12x "" -1 65536 1.5 0x; do
    status=0
    echo echo ran | "$@" --log-level "$level" - > /dev/null 2> "$out" || status=$?
    if [ "$status" != 2 ] || ! grep -q -- '--log-level takes a level from 0 to 65535' "$out"; then
        echo "--log-level '$level' gave status $status:" >&2
        cat "$out" >&2
        exit 1
    fi
done
# Good levels, decimal or hexadecimal as in scripts, run the script.
for level in 0 3000 0xFFFF; do
    echo echo ran | "$@" --json --log-level "$level" - | grep -qx '{"event":"echo","text":"ran"}'
done
