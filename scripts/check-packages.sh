#!/bin/sh
# Checks the Debian packages in a folder with lintian; any error or warning fails. A finding that
# is accepted has an override, with its reason, in the package (cmake/deb/lintian-overrides.in).
# Informational tags are not shown (lintian -I shows them).
# Usage: scripts/check-packages.sh FOLDER
set -eu
if [ $# -ne 1 ]; then
    echo "usage: $0 FOLDER" >&2
    exit 2
fi
set -- "$1"/*.deb
if [ ! -e "$1" ]; then
    echo "$0: no .deb in the folder" >&2
    exit 1
fi
echo "lintian: $*"
lintian --fail-on error,warning --tag-display-limit 0 "$@"
echo "lintian: no errors and no warnings"
