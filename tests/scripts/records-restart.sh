#!/bin/sh
# Two runs of the desk host on one root directory: the operating-time records written by the
# first run are loaded by the second, which writes them back after its own record.
set -eu
sim=$1
root=$(mktemp -d -t sysctrl-records-restart.XXXXXX)
trap 'rm -rf "$root"' EXIT
trap 'exit 1' HUP INT TERM
records=$root/var/tvservice/oled_maintance_records.log

# One maintenance run at the given time; the host must report no error.
run() {
    errors=$(printf '%s\n' "state clock.utcTime $1" 'file /var/tvservice/tvRunningTime 7' \
        'controlOledMaint 1' 'wait' | "$sim" --json --only error --root "$root" -)
    if [ -n "$errors" ]; then
        echo "run at $1: $errors" >&2
        exit 1
    fi
}

expect() {
    actual=$(cat "$records" 2>/dev/null || echo '<missing>')
    if [ "$actual" != "$1" ]; then
        printf 'after %s, expected:\n%s\nactual:\n%s\n' "$2" "$1" "$actual" >&2
        exit 1
    fi
}

run 1000
expect '1000:7:0' 'the first run'
run 2000
expect '2000:7:0
1000:7:0' 'the second run'
