#!/bin/sh
# What the desk host says when --dbus cannot serve: a value that is neither a bus name nor an
# address is a bad command line naming the forms accepted; a session bus that is not there is named
# as such, with the way to get one; a bridge that did not start says why, whatever --log-level and
# --only let through.
# usage: dbus-option.sh SYSCTRL_SIM
set -eu
sim=$1
work=$(mktemp -d -t sysctrl-dbus-option.XXXXXX)
trap 'rm -rf "$work"' EXIT
trap 'exit 1' HUP INT TERM

# Runs the desk host with ARGS, in the environment changed by $environment (env's arguments), on
# a one-line script; fails unless it ends with STATUS and its standard error holds each of TEXT...
#   expect STATUS "ARGS" TEXT...
environment=""
expect() {
    want=$1
    args=$2
    shift 2
    status=0
    # shellcheck disable=SC2086
    echo "echo ran" | env $environment "$sim" $args - > "$work/out" 2> "$work/err" || status=$?
    for text in "$@"; do
        if [ "$status" != "$want" ] || ! grep -qF -- "$text" "$work/err"; then
            echo "sysctrl-sim $args: status $status (wanted $want), standard error:" >&2
            cat "$work/err" >&2
            echo "(wanted it to hold: $text)" >&2
            exit 1
        fi
    done
}

expect 2 "--dbus sesion" '--dbus takes session, system or the address of a bus' \
    'unix:path=FILE' 'tcp:host=HOST,port=PORT' '"sesion" is none of these (did you mean session?)'
expect 2 "--dbus localhost:4711" '"localhost:4711" is none of these'
expect 2 "--dbus unix:" '"unix:" is none of these'

environment="-u DBUS_SESSION_BUS_ADDRESS -u XDG_RUNTIME_DIR"
expect 1 "--dbus session" 'there is no session bus: DBUS_SESSION_BUS_ADDRESS is not set, and neither is XDG_RUNTIME_DIR' \
    'dbus-run-session -- sysctrl-sim --dbus session'
environment="-u DBUS_SESSION_BUS_ADDRESS XDG_RUNTIME_DIR=$work"
expect 1 "--dbus session" "there is no $work/bus" 'dbus-run-session'

# A bus address where no bus listens: the bridge's own reason, though the log shows nothing. The
# bus library (sdbus-c++ 1.2) keeps the bus object of a connection that failed to start, which a
# leak check would report, so leaks are not checked for this run alone.
environment="ASAN_OPTIONS=${ASAN_OPTIONS:-}:detect_leaks=0"
expect 1 "--log-level 0 --only echo --dbus unix:path=$work/none" \
    "sysctrl-sim: the bridge did not start: Cannot serve on the unix:path=$work/none bus:"
if grep -q . "$work/out"; then
    echo "the desk host ran the script though the bridge did not start:" >&2
    cat "$work/out" >&2
    exit 1
fi
