#!/usr/bin/env python3
"""Runs the examples of docs/dbus.md against sysctrl-sim --dbus session on a private bus: each
"$ " line of a console block must print the lines below it, each python block the text block
that follows it."""
import importlib.util
import re
import subprocess
import sys

import simbus

# python3-dbus is Debian's: when another interpreter runs this test, the examples use Debian's.
PYTHON = sys.executable if importlib.util.find_spec("dbus") else "/usr/bin/python3"


def examples(markdown):
    """(kind, code, expected) for every console command and every python block."""
    blocks = re.findall(r"```(\w+)\n(.*?)```", markdown, re.S)
    found = []
    for index, (kind, body) in enumerate(blocks):
        if kind == "console":
            for command in re.split(r"^\$ ", body, flags=re.M)[1:]:
                line, _, output = command.partition("\n")
                found.append(("shell", line, output.strip()))
        elif kind == "python" and index + 1 < len(blocks) and blocks[index + 1][0] == "text":
            found.append(("python", body, blocks[index + 1][1].strip()))
    return found


def main(sim, doc):
    failures = []
    cases = examples(open(doc).read())
    simbus.require("bash", "busctl", "gdbus")
    if subprocess.run([PYTHON, "-c", "import dbus"], capture_output=True).returncode != 0:
        raise simbus.SetupError("%s cannot import dbus: install python3-dbus "
                                "(scripts/install-deps.sh does)" % PYTHON)
    bus = simbus.SimOnBus(sim)
    try:
        for kind, code, expected in cases:
            command = ["bash", "-c", code] if kind == "shell" else [PYTHON, "-c", code]
            result = subprocess.run(command, env=bus.env, stdout=subprocess.PIPE,
                                    stderr=subprocess.STDOUT, text=True, timeout=simbus.HANG_GUARD)
            if result.stdout.strip() != expected:
                failures.append("%s\nprinted:  %r\nexpected: %r" % (code, result.stdout, expected))
    finally:
        bus.stop()
    for failure in failures:
        print("FAIL:", failure)
    print("%d examples run" % len(cases))
    return 1 if failures or len(cases) < 8 else 0


if __name__ == "__main__":
    simbus.run(main, sys.argv[1], sys.argv[2])
