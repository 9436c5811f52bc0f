#!/bin/sh
# Grows the kept fuzz corpora: runs each libFuzzer target for SECONDS from its corpus in
# fuzz/corpus/NAME with fuzz/dict/NAME.dict, then merges what the run found back into that folder,
# minimized with libFuzzer's -merge=1. The hand-written seeds (any name that is not a 40-digit
# hexadecimal hash) are always kept; the found inputs (named by their hash) are replaced by the
# merge's choice among the old and the new ones, so the folder keeps one input per set of features
# rather than growing by every run. Inputs over 64 KiB are left out. Prints one line per target;
# exits 1, keeping the corpus as it was, when a target found something (its input stays as
# BUILD_DIR/fuzz-refresh/crash-*).
# usage: scripts/fuzz-refresh-corpus.sh BUILD_DIR SECONDS [NAME...]
set -eu
build=$(cd "$1" && pwd)
seconds=$2
shift 2
cd "$(dirname "$0")/.."
[ $# -gt 0 ] || set -- opc uart farfield antenna diagnostic records earom signature script
logs="$build/fuzz-refresh"
mkdir -p "$logs"
max_size=65536
# Whether a file's name is libFuzzer's: the SHA-1 of its content.
found_by_fuzzer() {
    basename "$1" | grep -qx '[0-9a-f]\{40\}'
}
failed=0
for name in "$@"; do
    corpus="fuzz/corpus/$name"
    program="$build/bin/fuzz-$name"
    [ -x "$program" ] || { echo "no $program: build the fuzz preset first" >&2; exit 2; }
    found=$(mktemp -d)
    merged=$(mktemp -d)
    extra=""
    # As in fuzz-run.sh: per-input leak checks would slow the records target fifty times.
    [ "$name" = records ] && extra="-detect_leaks=0"
    before=$(find "$corpus" -type f | wc -l)
    status=0
    # shellcheck disable=SC2086
    "$program" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=2048 \
        -print_final_stats=1 -dict="fuzz/dict/$name.dict" -artifact_prefix="$logs/" $extra \
        "$found" "$corpus" > "$logs/$name.log" 2>&1 || status=$?
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$logs/$name.log")
    if [ "$status" -ne 0 ]; then
        echo "fuzz-$name: FINDING (exit $status, see $logs/$name.log); corpus left as it was"
        failed=1
        rm -rf "$found" "$merged"
        continue
    fi
    for file in "$corpus"/*; do
        if ! found_by_fuzzer "$file"; then
            cp "$file" "$merged/"
        fi
    done
    # Every input of the corpus and of the run, kept when it adds features to the seeds and to
    # what was kept before it.
    # shellcheck disable=SC2086
    "$program" -merge=1 -timeout=20 -rss_limit_mb=2048 $extra \
        "$merged" "$corpus" "$found" > "$logs/$name.merge.log" 2>&1
    for file in "$corpus"/*; do
        if found_by_fuzzer "$file"; then
            rm "$file"
        fi
    done
    for file in "$merged"/*; do
        if found_by_fuzzer "$file" && [ "$(wc -c < "$file")" -le $max_size ]; then
            cp "$file" "$corpus/"
        fi
    done
    rm -rf "$found" "$merged"
    after=$(find "$corpus" -type f | wc -l)
    bytes=$(cat "$corpus"/* | wc -c)
    echo "fuzz-$name: ${seconds}s, ${runs:-?} inputs run, corpus $before -> $after files, $bytes bytes"
done
exit $failed
