#!/bin/sh
# The hardening legs of CI, each timed: the whole suite under ASan+UBSan (stopping at the first
# report), the whole suite under TSan, and a short run of every fuzz target from the ASan build.
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
logs=$(mktemp -d)
leg scripts/fuzz-run.sh build-asan "${FUZZ_SECONDS:-30}" "$logs"
rm -rf "$logs"
