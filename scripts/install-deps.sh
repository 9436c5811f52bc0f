#!/bin/sh
# Installs the Debian packages the project builds, tests and packages with; does nothing when all
# are there. With --arm, also the cross compilers and qemu-user for the armhf and arm64 builds
# (their target libraries come from scripts/make-sysroot.sh); with --fresh-root, only debootstrap,
# for scripts/test-fresh-root.sh. The bus tests call busctl (in systemd, which installs as a package
# without running) and, for a user who is not root, newuidmap (uidmap).
set -eu

packages="cmake ninja-build g++ make pkg-config libboost-dev libpng-dev libgtest-dev libgmock-dev \
libbenchmark-dev nlohmann-json3-dev pngcheck coreutils dpkg-dev file \
libsdbus-c++-dev libsdbus-c++-bin dbus libglib2.0-bin python3 python3-dbus util-linux \
systemd uidmap clang libclang-rt-14-dev"
# lintian checks the Debian packages `make package` and the test package.lintian build.
packages="$packages lintian"
if [ "${1:-}" = --arm ]; then
    packages="$packages g++-arm-linux-gnueabihf g++-aarch64-linux-gnu qemu-user"
elif [ "${1:-}" = --fresh-root ]; then
    packages="debootstrap"
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
elif [ -t 0 ]; then
    sudo="sudo"
else
    # Nobody is there to type a password: fail at once rather than wait for one.
    sudo="sudo -n"
fi
echo "Installing:$missing"
# Through env, as sudo does not pass the caller's environment on.
apt="$sudo env DEBIAN_FRONTEND=noninteractive apt-get"
# shellcheck disable=SC2086
if ! $apt install -y --no-install-recommends $missing; then
    $apt update
    $apt install -y --no-install-recommends $missing
fi
