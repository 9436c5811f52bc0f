#!/usr/bin/env python3
"""The runtime packages are apart from the development files, and the desk host runs without them.

No package but sysctrlservice-dev holds headers, static libraries, pkg-config files, CMake package
files or a shared library's link name. sysctrlservice-deskhost and the packages of this build that
it depends on, directly or not, are unpacked alone into a scratch root; sysctrlservice-dev must
not be among them, and the desk host run from there loads the plug-in beside it and answers a
call through a client.
Usage: check_runtime.py FOLDER (the folder of the packages)"""
import glob
import os
import re
import subprocess
import sys
import tempfile

DEV_PACKAGE = "sysctrlservice-dev"
DESK_HOST = "sysctrlservice-deskhost"
# Paths of development files, as dpkg-deb --contents shows them (a link name as "libX.so -> ...").
DEV_FILES = re.compile(r"^\./usr/include/|\.a$|/pkgconfig/[^/]+\.pc$|/cmake/|/lib[^/]*\.so -> ")
SCRIPT = "addClient c\ncontrolOpc getOpcState\n"


def field(deb, name):
    return subprocess.run(["dpkg-deb", "--field", deb, name], capture_output=True, text=True,
                          check=True).stdout.strip()


def contents(deb):
    listing = subprocess.run(["dpkg-deb", "--contents", deb], capture_output=True, text=True,
                             check=True).stdout
    # Permissions, owner, size, date, time, then the path (and a link's target).
    return [line.split(None, 5)[5] for line in listing.splitlines()]


def closure(packages, start):
    """`start` and the packages of `packages` it depends on, directly or not."""
    needed, todo = set(), [start]
    while todo:
        name = todo.pop()
        if name in needed:
            continue
        needed.add(name)
        for alternative in re.split(r"[,|]", field(packages[name], "Depends")):
            dependency = alternative.strip().split(" ")[0]
            if dependency in packages:
                todo.append(dependency)
    return needed


def run_desk_host(packages, names, failures):
    with tempfile.TemporaryDirectory(prefix="sysctrl-runtime.") as root:
        for name in sorted(names):
            subprocess.run(["dpkg-deb", "--extract", packages[name], root], check=True)
        env = {k: v for k, v in os.environ.items() if not k.startswith("LD_")}
        run = subprocess.run([os.path.join(root, "usr/bin/sysctrl-sim"), "--only", "return,callback"],
                             input=SCRIPT, capture_output=True, text=True, env=env, timeout=120)
        print("sysctrl-sim from the unpacked packages, exit status %d:" % run.returncode)
        print(run.stdout + run.stderr)
        if run.returncode != 0 or 'c.controlOpcResult("0")' not in run.stdout:
            failures.append("the desk host did not answer controlOpc through its client")


def main(folder):
    packages = {field(deb, "Package"): deb for deb in glob.glob(os.path.join(folder, "*.deb"))}
    failures = []
    for name in (DEV_PACKAGE, DESK_HOST):
        if name not in packages:
            failures.append("no package %s in %s" % (name, folder))
    if failures:
        print("FAIL:", failures)
        return 1
    for name, deb in sorted(packages.items()):
        if name == DEV_PACKAGE:
            continue
        for path in contents(deb):
            if DEV_FILES.search(path):
                failures.append("%s holds the development file %s" % (name, path))

    needed = closure(packages, DESK_HOST)
    print("the desk host needs:", sorted(needed))
    if DEV_PACKAGE in needed:
        failures.append("%s depends on %s" % (DESK_HOST, DEV_PACKAGE))
    run_desk_host(packages, needed - {DEV_PACKAGE}, failures)
    for failure in failures:
        print("FAIL:", failure)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
