#!/bin/sh
# Rewrites the docs' generated sections: the simulated objects' reference in docs/sim.md, and the
# tables of operations, methods and signals in docs/interface.md and docs/dbus.md.
#   update-generated-docs.sh [BUILD_DIR]
set -eu
cd "$(dirname "$0")/.."
build=${1:-build}
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
update() {
    doc=$1
    name=$2
    shift 2
    "$@" > "$tmp/section"
    scripts/doc-section.sh "$doc" "$name" < "$tmp/section" > "$tmp/doc"
    cat "$tmp/doc" > "$doc"
}
update docs/sim.md describe "$build/bin/sysctrl-sim" --describe
describe="$build/bin/sysctrl-describe-interface"
update docs/interface.md operations "$describe" operations
update docs/dbus.md dbus-methods "$describe" dbus-methods
update docs/dbus.md dbus-signals "$describe" dbus-signals
