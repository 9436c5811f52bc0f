#!/bin/sh
# Runs libFuzzer targets for SECONDS each, one after another, starting from the seed corpus in
# fuzz/corpus/NAME (read only: new inputs go to a scratch directory) with fuzz/dict/NAME.dict.
# Prints one line per target: inputs run, coverage (edges and features) and findings; exits 1 when
# a target found something (its input is kept as LOGDIR/crash-*, the log as LOGDIR/NAME.log).
# usage: scripts/fuzz-run.sh BUILD_DIR SECONDS LOGDIR [NAME...]
set -eu
build=$1
seconds=$2
logs=$3
shift 3
cd "$(dirname "$0")/.."
[ $# -gt 0 ] || set -- opc uart farfield antenna diagnostic records earom signature script
mkdir -p "$logs"
failed=0
for name in "$@"; do
    scratch=$(mktemp -d)
    status=0
    extra=""
    # Each records input starts a new application, whose thread set-up leaves the input's
    # allocation counts unequal, so libFuzzer would run LeakSanitizer after every input (50 times
    # slower). Leaks are still looked for when the run ends.
    [ "$name" = records ] && extra="-detect_leaks=0"
    # shellcheck disable=SC2086
    "$build/bin/fuzz-$name" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=2048 \
        -print_final_stats=1 -dict="fuzz/dict/$name.dict" -artifact_prefix="$logs/" $extra \
        "$scratch" "fuzz/corpus/$name" > "$logs/$name.log" 2>&1 || status=$?
    rm -rf "$scratch"
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$logs/$name.log")
    cov=$(grep -o 'cov: [0-9]* ft: [0-9]*' "$logs/$name.log" | tail -n 1)
    if [ "$status" -eq 0 ]; then
        result="no finding"
    else
        result="FINDING (exit $status, see $logs/$name.log)"
        failed=1
    fi
    echo "fuzz-$name: ${seconds}s, ${runs:-?} inputs, ${cov:-cov: ?}, $result"
done
exit $failed
