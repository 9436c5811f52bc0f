#!/bin/sh
# The manual page of sysctrl-sim documents every option that sysctrl-sim --help lists.
set -eu
sim=$1
page=$2
options=$("$sim" --help | grep -o -e '--[a-z][a-z-]*' | sort -u)
if [ -z "$options" ]; then
    echo "sysctrl-sim --help lists no option" >&2
    exit 1
fi
missing=0
for option in $options; do
    # The page writes each hyphen as \- (a minus sign, which man shows and searches as "-"), and
    # an option's entry in bold (.B, .BI, .BR).
    escaped=$(printf '%s' "$option" | sed 's/-/\\-/g')
    if ! grep -e '^\.B' "$page" | grep -q -F -e "$escaped"; then
        echo "the manual page lacks $option" >&2
        missing=1
    fi
done
exit $missing
