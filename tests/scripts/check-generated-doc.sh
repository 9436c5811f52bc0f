#!/bin/sh
# A generated section of a page is what its command prints now.
#   check-generated-doc.sh DOC NAME COMMAND...
set -eu
here=$(dirname "$0")
doc=$1
name=$2
shift 2
work=$(mktemp -d -t sysctrl-doc-section.XXXXXX)
trap 'rm -rf "$work"' EXIT
trap 'exit 1' HUP INT TERM
"$@" > "$work/section"
"$here/../../scripts/doc-section.sh" "$doc" "$name" < "$work/section" > "$work/expected"
diff -u "$doc" "$work/expected" || {
    echo "$doc: the section $name is out of date: run scripts/update-generated-docs.sh" >&2
    exit 1
}
