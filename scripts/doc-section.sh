#!/bin/sh
# Prints DOC with the lines between "<!-- NAME:begin -->" and "<!-- NAME:end -->" replaced by
# standard input: the docs' generated sections.
#   doc-section.sh DOC NAME < CONTENT
set -eu
doc=$1
name=$2
content=$(mktemp -t sysctrl-doc-section.XXXXXX)
trap 'rm -f "$content"' EXIT
trap 'exit 1' HUP INT TERM
cat > "$content"
grep -qx "<!-- $name:begin -->" "$doc" || { echo "$doc has no section $name" >&2; exit 1; }
awk -v begin="<!-- $name:begin -->" -v end="<!-- $name:end -->" -v content="$content" '
    $0 == begin { print; while ((getline line < content) > 0) print line; skip = 1; next }
    $0 == end { skip = 0 }
    !skip { print }
' "$doc"
