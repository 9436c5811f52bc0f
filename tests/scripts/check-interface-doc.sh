#!/bin/sh
# Runs every example of docs/interface.md in the desk host and compares what it prints with the
# page. An example is a ```sim block; the ```json block right after it is what
# `sysctrl-sim --json --only callback,return,state,file,error` prints for it, each example in a
# fresh run. With UPDATE=1 the page's output blocks are rewritten instead.
#   check-interface-doc.sh DOC SIM [ARG...]
# SIM ARG... is the command that starts the desk host (an emulator in front of it when the program
# is built for another processor).
set -eu
doc=$1
shift
kinds=callback,return,state,file,error
work=$(mktemp -d -t sysctrl-interface-doc.XXXXXX)
trap 'rm -rf "$work"' EXIT
trap 'exit 1' HUP INT TERM

# Example N's script goes to N.sim, the output the page shows to N.shown, its line to N.line.
awk -v dir="$work" '
    function fail(text) { print FILENAME ":" NR ": " text > "/dev/stderr"; bad = 1; exit 1 }
    state == "" && /^```sim$/ {
        n++; state = "sim"; print NR > (dir "/" n ".line"); close(dir "/" n ".line"); next
    }
    state == "sim" && /^```$/ {
        state = "after"; printf "" >> (dir "/" n ".sim"); close(dir "/" n ".sim"); next
    }
    state == "sim" { print > (dir "/" n ".sim"); next }
    state == "after" && /^```json$/ { state = "json"; printf "" >> (dir "/" n ".shown"); next }
    state == "after" { fail("a sim example must be followed at once by its json output") }
    state == "json" && /^```$/ { state = ""; close(dir "/" n ".shown"); next }
    state == "json" { print > (dir "/" n ".shown"); next }
    END { if (!bad && state != "") fail("unterminated example") }
' "$doc"

count=0
failed=0
for script in "$work"/*.sim; do
    [ -e "$script" ] || break
    n=$(basename "$script" .sim)
    count=$((count + 1))
    "$@" --json --only "$kinds" "$script" > "$work/$n.actual" 2> "$work/$n.stderr" || true
    if ! diff -u "$work/$n.shown" "$work/$n.actual" > "$work/$n.diff"; then
        if [ "${UPDATE:-0}" != 1 ]; then
            echo "$doc:$(cat "$work/$n.line"): the example's output differs:"
            cat "$work/$n.diff" "$work/$n.stderr"
        fi
        failed=$((failed + 1))
    fi
done
if [ "$count" -eq 0 ]; then
    echo "$doc: no examples found" >&2
    exit 1
fi

if [ "${UPDATE:-0}" = 1 ]; then
    awk -v dir="$work" '
        /^```sim$/ { n++ }
        state == "json" && /^```$/ {
            file = dir "/" n ".actual"
            while ((getline line < file) > 0) print line
            close(file); state = ""; print; next
        }
        state == "json" { next }
        /^```json$/ { state = "json" }
        { print }
    ' "$doc" > "$work/doc" && cat "$work/doc" > "$doc"
    echo "$count examples run, $failed output blocks rewritten"
    exit 0
fi
[ "$failed" -eq 0 ] || { echo "$failed of $count examples differ" >&2; exit 1; }
echo "$count examples match"
