#!/bin/sh
# Installs the Debian packages the project builds, tests and packages with; does nothing when all
# are there. With --arm, also the cross compilers and qemu-user for the armhf and arm64 builds
# (their target libraries come from scripts/make-sysroot.sh).
set -eu

packages="cmake ninja-build g++ make pkg-config libboost-dev libpng-dev libgtest-dev libgmock-dev \
libbenchmark-dev nlohmann-json3-dev pngcheck coreutils dpkg-dev file \
libsdbus-c++-dev libsdbus-c++-bin dbus libglib2.0-bin python3 python3-dbus util-linux \
clang libclang-rt-14-dev"
# lintian checks the Debian packages `make package` and the test package.lintian build.
packages="$packages lintian"
if [ "${1:-}" = --arm ]; then
    packages="$packages g++-arm-linux-gnueabihf g++-aarch64-linux-gnu qemu-user"
fi

missing=""
for p in $packages; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing="$missing $p"
    fi
done
[ -z "$missing" ] && exit 0

if [ "$(id -u)" -eq 0 ]; then
    sudo=""
else
    sudo="sudo"
fi
echo "Installing:$missing"
export DEBIAN_FRONTEND=noninteractive
# shellcheck disable=SC2086
if ! $sudo apt-get install -y --no-install-recommends $missing; then
    $sudo apt-get update
    $sudo apt-get install -y --no-install-recommends $missing
fi
