#!/bin/bash
# Checks the README's quick start on a fresh Debian 12: builds a minimal root (debootstrap
# --variant=minbase) from this machine's Debian mirror, installs only git, make and sudo in it,
# clones this repository's HEAD into it twice and runs `make demo` and `make test` there, first as
# root, then as a user with passwordless sudo in a clone of their own. Prints the figures the
# README quotes: what the first run downloaded and installed, build times, build/ sizes, test time.
#
# usage: scripts/test-fresh-root.sh [--keep] [FOLDER]
#   FOLDER  where to build the root (default: a fresh folder in /var/tmp); it needs about 3 GB
#   --keep  keep the root afterwards (default: remove it)
#
# Runs as root (or through sudo -n). The root's processes run in a PID and mount namespace of
# their own: whatever happens, they all end with this script and the root's mounts (/proc, /dev,
# a /dev/shm of its own, /sys) go with them; they are never the machine's. /sys is mounted without its cgroup mounts, as in
# a plain chroot. The root is entered with pivot_root rather than chroot, so that user namespaces
# (the bus policy test as a user) work in it as on a machine.
set -euo pipefail

here=$(cd "$(dirname "$0")/.." && pwd)
if [ "$(id -u)" -ne 0 ]; then
    exec sudo -n "$0" "$@"
fi

keep=0
if [ "${1:-}" = --keep ]; then
    keep=1
    shift
fi
"$here/scripts/install-deps.sh" --fresh-root

# The machine's Debian mirror: the first bookworm source in its apt sources (one-line or deb822).
mirror=$({ cat /etc/apt/sources.list /etc/apt/sources.list.d/*.list \
    /etc/apt/sources.list.d/*.sources 2>/dev/null || true; } | awk '
    /^deb / && $3 == "bookworm" { print $2; exit }
    /^URIs:/ { uri = $2 }
    /^Suites:/ && / bookworm( |$)/ && uri != "" { print uri; exit }
    /^$/ { uri = "" }')
mirror=${mirror:-http://deb.debian.org/debian}

if [ -n "${1:-}" ]; then
    mkdir -p "$1"
    work=$(cd "$1" && pwd)
else
    work=$(mktemp -d /var/tmp/sysctrl-fresh-root.XXXXXX)
fi
root=$work/root
log=$work/log
mkdir -p "$log"

# Each long step runs in the background and is waited for, so that a signal is handled at once.
# Killing its unshare (which ignores SIGTERM while its child runs) ends every process in its
# namespaces: the first gets SIGKILL when unshare goes (--kill-child), and the others with it.
runner=""
run() {
    local status=0
    "$@" &
    runner=$!
    wait "$runner" || status=$?
    runner=""
    return "$status"
}

cleanup() {
    status=$?
    if [ -n "$runner" ]; then
        kill -KILL "$runner" 2>/dev/null || true
        wait "$runner" 2>/dev/null || true
    fi
    if [ "$keep" = 1 ]; then
        echo "The root is kept in $root; logs in $log."
    else
        rm -rf "$work"
    fi
    exit "$status"
}
trap cleanup EXIT
trap 'exit 1' HUP INT TERM

echo "Building a minimal Debian 12 root in $root from $mirror"
# In namespaces of its own, so that the mounts debootstrap makes in the root never reach the
# machine, and none of its processes outlives it.
run unshare --mount --pid --fork --kill-child -- debootstrap --variant=minbase bookworm "$root" "$mirror" \
    > "$log/debootstrap.log" 2>&1 || {
    tail -20 "$log/debootstrap.log"
    exit 1
}

# The repository's HEAD, as a bare repository standing in for the remote a newcomer clones from.
commit=$(git -C "$here" rev-parse HEAD)
git clone --quiet --bare --no-local "$here" "$root/srv/sysctrlservice.git"
git -C "$root/srv/sysctrlservice.git" symbolic-ref HEAD refs/heads/fresh-root
git -C "$root/srv/sysctrlservice.git" update-ref refs/heads/fresh-root "$commit"
chmod -R a+rX "$root/srv/sysctrlservice.git"
if [ -n "$(git -C "$here" status --porcelain --untracked-files=no)" ]; then
    echo "Note: the work tree has uncommitted changes; the root gets the commit $commit only."
fi

cp "$here/scripts/fresh-root-steps.sh" "$root/root/fresh-root-steps.sh"

# Enters the root and runs the steps there, pid 1 of a PID namespace of its own.
set +e
run unshare --mount --pid --fork --kill-child --propagation private -- /bin/bash -c '
    set -eu
    root=$1
    mount --bind "$root" "$root"
    mount -t proc proc "$root/proc"
    mount --rbind /dev "$root/dev"
    mount -t tmpfs -o mode=1777 tmpfs "$root/dev/shm"
    mount --bind /sys "$root/sys"
    cd "$root"
    mkdir -p .machine
    pivot_root . .machine
    cd /
    umount -l /.machine
    rmdir /.machine
    exec /usr/bin/env -i PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
        HOME=/root LANG=C.UTF-8 /bin/bash /root/fresh-root-steps.sh
' enter "$root" > >(tee "$log/steps.log") 2>&1
status=$?
set -e
cp "$root/root/figures.txt" "$log/figures.txt" 2>/dev/null || true
exit "$status"
