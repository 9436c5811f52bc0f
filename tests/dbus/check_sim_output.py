#!/usr/bin/env python3
"""sysctrl-sim --dbus prints what the service writes to standard output while it serves, not only
when it stops: after a script line from standard input, and when a D-Bus caller's call made the
service write. Until it did, the lines waited in a pipe that a long run could fill, and a service
writing to a full pipe blocks for good. A PNG capture whose temporary file is a full device makes
the writer print its long-jump line."""
import os
import queue
import shutil
import subprocess
import sys
import threading
import time

import simbus

SET_JMP = '{"event":"stdout","text":"Error: set jmp"}'


def lines_of(stream):
    """A queue that receives each line of `stream` as it comes, None at its end."""
    lines = queue.Queue()

    def pump():
        for line in stream:
            lines.put(line.rstrip("\n"))
        lines.put(None)

    threading.Thread(target=pump, daemon=True).start()
    return lines


def wait_for(lines, wanted):
    """The lines read until `wanted` came (True) or the desk host ended or hung (False)."""
    seen, deadline = [], time.monotonic() + simbus.HANG_GUARD
    while time.monotonic() < deadline:
        try:
            line = lines.get(timeout=max(0.0, deadline - time.monotonic()))
        except queue.Empty:
            break
        if line is None:
            break
        seen.append(line)
        if line == wanted:
            return True, seen
    return False, seen


def main(sim):
    if not os.access("/dev/full", os.W_OK):
        print("this test needs /dev/full")
        return 1
    failures = []
    root = simbus.temporary_folder("output")
    captures = os.path.join(root, "captures")
    os.mkdir(captures)
    os.symlink("/dev/full", os.path.join(captures, "temp.png"))
    # The capture's write fails half way on purpose, and on that path the service keeps its row
    # memory (the set's service does the same); leak checking stays on in every other test.
    if "ASAN_OPTIONS" in os.environ:
        os.environ["ASAN_OPTIONS"] += ":detect_leaks=0"
    try:
        bus = simbus.SimOnBus(sim, options=["--json", "--only", "stdout,echo", "--root", root],
                              stdout=subprocess.PIPE)
    except BaseException:
        shutil.rmtree(root, ignore_errors=True)
        raise
    try:
        lines = lines_of(bus.sim.stdout)
        bus.send("state ScreenCapture.width 1920")
        bus.send("state ScreenCapture.height 1080")
        bus.send("cmdCaptureScreen %s shot.png 2" % captures)
        found, seen = wait_for(lines, SET_JMP)
        if not found:
            failures.append("a script line's output did not come while serving: %r" % seen)

        bus.send("echo ready")
        wait_for(lines, '{"event":"echo","text":"ready"}')
        reply = bus.call("CmdCaptureScreen", "ssi", captures, "bus.png", "2")
        if reply.returncode != 0:
            failures.append("CmdCaptureScreen failed: %r" % reply.stderr)
        found, seen = wait_for(lines, SET_JMP)
        if not found:
            failures.append("a D-Bus call's output did not come while serving: %r" % seen)
    finally:
        status = bus.stop()
        shutil.rmtree(root, ignore_errors=True)
    if status != 0:
        failures.append("sysctrl-sim ended with %s after SIGTERM" % status)
    for failure in failures:
        print("FAIL:", failure)
    return 1 if failures else 0


if __name__ == "__main__":
    simbus.run(main, sys.argv[1])
