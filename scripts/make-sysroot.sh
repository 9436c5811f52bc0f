#!/bin/sh
# Prepares a target's sysroot from Debian's packages: make-sysroot.sh ARCH DIR (ARCH armhf or arm64).
# The packages are fetched with a private apt state beside DIR (DIR-apt), so the machine's own
# dpkg architectures and package lists stay as they are, and unpacked with dpkg -x: what the
# cross build links against, what qemu-user runs the tests with, and the packages' shlibs and
# symbols files under DIR/DEBIAN, from which dpkg-shlibdeps computes a package's dependencies.
# Does nothing when DIR already holds the same package versions.
set -eu
arch=$1
mkdir -p "$2"
sysroot=$(realpath "$2")

# The target's runtime (libc, libgcc, libstdc++) and the -dev packages the build and the tests use.
# libboost-dev is a metapackage and is replaced by the versioned package it names.
packages="libc6 libgcc-s1 libstdc++6 zlib1g zlib1g-dev libpng16-16 libpng-dev libboost-dev \
libgtest-dev libgmock-dev nlohmann-json3-dev \
libsdbus-c++-dev libsdbus-c++1 libsystemd0 libcap2 libgcrypt20 libgpg-error0 liblzma5 libzstd1 liblz4-1"

state=$sysroot-apt
mkdir -p "$state/lists/partial" "$state/archives/partial" "$state/debs"
touch "$state/status"
apt_private() {
    tool=$1
    shift
    "$tool" -q -o APT::Architecture="$arch" -o APT::Architectures="$arch" \
        -o Dir::State::Lists="$state/lists" -o Dir::State::status="$state/status" \
        -o Dir::Cache="$state" -o Dir::Cache::archives="$state/archives" \
        -o APT::Sandbox::User=root -o Debug::NoLocking=1 "$@"
}

# A day-old index is good enough: the build only needs versions that exist.
if [ -z "$(find "$state/lists" -maxdepth 1 -name '*Packages*' -mtime -1 2>/dev/null)" ]; then
    # A mirror in the middle of a sync can fail one index; the others still serve.
    apt_private apt-get update >/dev/null 2>&1 || echo "make-sysroot: some $arch package lists were not updated" >&2
fi

# Unchanged lists since the sysroot was made: nothing to do.
if [ -f "$sysroot/.packages" ] && [ -z "$(find "$state/lists" -maxdepth 1 -newer "$sysroot/.packages")" ]; then
    exit 0
fi

boost=$(apt_private apt-cache depends libboost-dev | sed -n 's/^ *Depends: \(libboost[0-9.]*-dev\)$/\1/p' | head -n 1)
# shellcheck disable=SC2086
resolved=$(apt_private apt-cache policy $(echo "$packages" | sed "s/libboost-dev/$boost/") |
    awk '/^[^ ]/ { name = substr($1, 1, length($1) - 1) } /Candidate:/ { printf " %s=%s", name, $2 }')
if [ -f "$sysroot/.packages" ] && [ "$(cat "$sysroot/.packages")" = "$resolved" ]; then
    touch "$sysroot/.packages"
    exit 0
fi

echo "Preparing the $arch sysroot in $sysroot:$resolved"
rm -rf "$sysroot" "$state/debs"
mkdir -p "$sysroot/DEBIAN" "$state/debs"
# shellcheck disable=SC2086
(cd "$state/debs" && apt_private apt-get download $resolved >/dev/null)
for deb in "$state/debs"/*.deb; do
    dpkg-deb -x "$deb" "$sysroot"
    control=$(mktemp -d)
    dpkg-deb -e "$deb" "$control"
    for kind in shlibs symbols; do
        if [ -f "$control/$kind" ]; then
            cat "$control/$kind" >> "$sysroot/DEBIAN/$kind"
        fi
    done
    rm -rf "$control"
done

# Absolute links (libz.so -> /lib/...so.1, the dynamic loader) would point into the build
# machine: make each one relative to its own place in the sysroot.
find "$sysroot" -type l | while read -r link; do
    target=$(readlink "$link")
    case $target in
    /*)
        ln -sfn "$(realpath -m --relative-to="$(dirname "$link")" "$sysroot$target")" "$link"
        ;;
    esac
done
echo "$resolved" > "$sysroot/.packages"
