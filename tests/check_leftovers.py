#!/usr/bin/env python3
"""The first and the last test of the suite: nothing a test starts or makes outlives it.

Every test runs with TMPDIR set to the suite's own folder, so its temporary folders and files
land there and its processes carry that TMPDIR in their environment.

  check_leftovers.py start FOLDER STATE   makes FOLDER afresh and notes the processes that
                                          already carry it (an earlier, interrupted run's)
  check_leftovers.py end FOLDER STATE     fails when a process that carries FOLDER and was not
                                          noted is still running, or when FOLDER is not empty;
                                          removes FOLDER either way
"""
import json
import os
import shutil
import sys
import time

# Only a guard against waiting for ever: the wait ends as soon as the last process has gone. A
# test's process that is being killed may take a moment to go.
HANG_GUARD = 10


def carriers(folder):
    """{pid: (start time, command line)} of the processes whose environment has TMPDIR=folder."""
    marker = b"TMPDIR=" + os.fsencode(folder)
    found = {}
    for entry in os.listdir("/proc"):
        if not entry.isdigit() or int(entry) == os.getpid():
            continue
        try:
            with open("/proc/%s/environ" % entry, "rb") as f:
                if marker not in f.read().split(b"\0"):
                    continue
            with open("/proc/%s/stat" % entry) as f:
                # The start time is field 22, counted after the command name's closing bracket.
                start = f.read().rsplit(")", 1)[1].split()[19]
            with open("/proc/%s/cmdline" % entry, "rb") as f:
                command = f.read().replace(b"\0", b" ").decode(errors="replace").strip()
        except OSError:  # gone meanwhile, or another user's that we may not read
            continue
        found[int(entry)] = (start, command)
    return found


def start(folder, state):
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)
    # Tests reach sockets in here as other users (the bus policy test).
    os.chmod(folder, 0o755)
    with open(state, "w") as f:
        json.dump({str(pid): start for pid, (start, _) in carriers(folder).items()}, f)
    print("the suite's temporary folder:", folder)
    return 0


def end(folder, state):
    try:
        with open(state) as f:
            before = json.load(f)
    except (OSError, ValueError):
        before = {}
    deadline = time.monotonic() + HANG_GUARD
    while True:
        left = {pid: command for pid, (begun, command) in carriers(folder).items()
                if before.get(str(pid)) != begun}
        if not left or time.monotonic() > deadline:
            break
        time.sleep(0.1)
    failures = ["process %d still runs: %s" % (pid, command) for pid, command in sorted(left.items())]
    try:
        failures += ["left in %s: %s" % (folder, name) for name in sorted(os.listdir(folder))]
    except FileNotFoundError:
        failures.append("%s is gone: a test removed the suite's folder" % folder)
    shutil.rmtree(folder, ignore_errors=True)
    for failure in failures:
        print("FAIL:", failure)
    return 1 if failures else 0


if __name__ == "__main__":
    if len(sys.argv) != 4 or sys.argv[1] not in ("start", "end"):
        sys.exit(__doc__)
    sys.exit((start if sys.argv[1] == "start" else end)(sys.argv[2], sys.argv[3]))
