#!/bin/bash
# What scripts/test-fresh-root.sh runs inside the fresh root, as its root: installs git, make and
# sudo, makes the user `newcomer` with passwordless sudo, then runs the README's two commands in a
# clone of /srv/sysctrlservice.git, first as root, then as newcomer in a clone of their own. The
# figures go to /root/figures.txt.
set -euo pipefail
export DEBIAN_FRONTEND=noninteractive
figures=/root/figures.txt
: > "$figures"

note() {
    echo "$*" | tee -a "$figures"
}

echo "== installing git, make and sudo"
apt-get update -q > /root/apt.log 2>&1
apt-get install -y -q --no-install-recommends git make sudo >> /root/apt.log 2>&1 || {
    tail -20 /root/apt.log
    exit 1
}
useradd -m -s /bin/bash newcomer
echo 'newcomer ALL=(ALL) NOPASSWD: ALL' > /etc/sudoers.d/newcomer
chmod 440 /etc/sudoers.d/newcomer
# The stand-in for the remote belongs to root; the newcomer's clone may read it.
git config --system --add safe.directory /srv/sysctrlservice.git
note "root: Debian $(cat /etc/debian_version), $(nproc) processors, $(uname -r)"

# Runs `make TARGET` in DIR as USER (root or newcomer), its output in /root/USER-TARGET.log; notes
# the wall, user and system seconds, and build/'s size.
TIMEFORMAT='%R %U %S'
step() {
    local user=$1 dir=$2 target=$3 log=/root/$1-$3.log times
    echo "== $user: make $target"
    local command="cd $dir && make $target"
    if [ "$user" = root ]; then
        set +e
        times=$( { time bash -c "$command" > "$log" 2>&1; } 2>&1 )
        status=$?
        set -e
    else
        set +e
        times=$( { time su - "$user" -c "$command" > "$log" 2>&1; } 2>&1 )
        status=$?
        set -e
    fi
    read -r wall cpu_user cpu_system <<< "$times"
    note "$user make $target: status $status, wall ${wall} s, CPU $(echo "$cpu_user $cpu_system" |
        awk '{ printf "%.0f", $1 + $2 }') s (user ${cpu_user}, system ${cpu_system}), build/ $(du -sh "$dir/build" 2>/dev/null | cut -f1)"
    grep -E '^(Need to get|After this operation)' "$log" | sed "s/^/$user make $target: apt: /" |
        tee -a "$figures" || true
    grep -E 'tests passed|Total Test time' "$log" | sed "s/^/$user make $target: /" |
        tee -a "$figures" || true
    if [ "$status" -ne 0 ]; then
        tail -60 "$log"
        return 1
    fi
}

git clone -q /srv/sysctrlservice.git /root/sysctrlservice
su - newcomer -c 'git clone -q /srv/sysctrlservice.git sysctrlservice'
failed=0
step root /root/sysctrlservice demo || failed=1
step root /root/sysctrlservice test || failed=1
step newcomer /home/newcomer/sysctrlservice demo || failed=1
step newcomer /home/newcomer/sysctrlservice test || failed=1
note "installed in the root: $(du -sh --exclude=/proc --exclude=/sys --exclude=/dev \
    --exclude=/root/sysctrlservice --exclude=/home/newcomer/sysctrlservice / 2>/dev/null | cut -f1)"
# Nothing the runs started may still run (pid 1 is the shell that entered the root, then this
# script and its own subshells), nor may their temporary folders be left.
left=""
for process in /proc/[0-9]*; do
    pid=${process#/proc/}
    case $pid in 1 | $$ | "$BASHPID") continue ;; esac
    command=$(tr '\0' ' ' < "$process/cmdline" 2>/dev/null) || continue
    case $command in "" | "tr "* | "/bin/bash /root/fresh-root-steps.sh"*) continue ;; esac
    left="$left$pid $command"$'\n'
done
if [ -n "$left" ]; then
    note "processes still running in the root after the runs:"
    note "$left"
    failed=1
fi
if compgen -G '/tmp/sysctrl-*' > /dev/null; then
    note "left in /tmp: $(echo /tmp/sysctrl-*)"
    failed=1
fi
echo "== figures"
cat "$figures"
exit "$failed"
