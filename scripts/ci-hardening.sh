#!/bin/sh
# The hardening legs of CI, each timed: the whole suite under ASan+UBSan (stopping at the first
# report), the whole suite under TSan, and a short run of every fuzz target (built with clang, the
# only compiler with libFuzzer).
set -eu
cd "$(dirname "$0")/.."
leg() {
    start=$(date +%s)
    "$@"
    echo "leg '$*': $(($(date +%s) - start)) s"
}
for preset in asan tsan; do
    leg cmake --preset "$preset"
    leg cmake --build --preset "$preset"
    leg ctest --preset "$preset"
done
leg cmake --preset fuzz
leg cmake --build --preset fuzz
logs=$(mktemp -d)
leg scripts/fuzz-run.sh build-fuzz "${FUZZ_SECONDS:-30}" "$logs"
rm -rf "$logs"
