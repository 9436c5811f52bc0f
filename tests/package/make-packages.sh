#!/bin/sh
# Makes the Debian packages of a build with cpack into FOLDER/debs and unpacks every one into
# FOLDER/root, where dpkg would put their files under /. FOLDER is made afresh; cpack's output is
# shown only when it fails.
# Usage: make-packages.sh CPACK CPACK_CONFIG FOLDER
set -eu
cpack=$1
config=$2
folder=$3
rm -rf "$folder"
mkdir -p "$folder/root"
if ! "$cpack" --config "$config" -B "$folder/debs" >"$folder/cpack.log" 2>&1; then
    cat "$folder/cpack.log"
    exit 1
fi
# cpack's staging copies of the installed files.
rm -rf "$folder/debs/_CPack_Packages"
for deb in "$folder"/debs/*.deb; do
    dpkg-deb --extract "$deb" "$folder/root"
    echo "unpacked $(basename "$deb")"
done
