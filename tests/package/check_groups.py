#!/usr/bin/env python3
"""The groups that the D-Bus bridge's package grants its methods to, in the bus policy it installs,
are the groups its postinst creates.

The postinst runs in a scratch folder with getent and addgroup replaced by scripts that record
their calls: once as on a machine without the groups (each must be added as a system group) and
once as on a machine that has them (none may be added again).
Usage: check_groups.py FOLDER (the folder of the packages)"""
import glob
import os
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ET

POLICY_FOLDERS = ("usr/share/dbus-1/system.d", "etc/dbus-1/system.d")

# getent answers as on a machine where every group exists (GROUPS_EXIST=1) or none does.
GETENT = """#!/bin/sh
echo "getent $*" >>"$CALLS"
if [ "$GROUPS_EXIST" = 1 ]; then
    echo "$2:x:990:"
    exit 0
fi
exit 2
"""
ADDGROUP = """#!/bin/sh
echo "addgroup $*" >>"$CALLS"
"""


def policy_groups(root):
    """Every group named in the bus policies the package installs, and the policies' names."""
    policies = sorted(p for folder in POLICY_FOLDERS for p in glob.glob(os.path.join(root, folder, "*.conf")))
    groups = set()
    for policy in policies:
        for element in ET.parse(policy).getroot().iter():
            if element.get("group") is not None:
                groups.add(element.get("group"))
    return groups, [os.path.relpath(p, root) for p in policies]


def run_postinst(control, scratch, groups_exist):
    """The calls the postinst makes, run with `configure`."""
    tools = os.path.join(scratch, "tools")
    os.makedirs(tools, exist_ok=True)
    for name, text in (("getent", GETENT), ("addgroup", ADDGROUP)):
        path = os.path.join(tools, name)
        with open(path, "w") as f:
            f.write(text)
        os.chmod(path, 0o755)
    calls = os.path.join(scratch, "calls")
    open(calls, "w").close()
    env = dict(os.environ, PATH=tools + ":/usr/bin:/bin", CALLS=calls, GROUPS_EXIST="1" if groups_exist else "0")
    subprocess.run([os.path.join(control, "postinst"), "configure"], env=env, check=True)
    with open(calls) as f:
        return [line.split() for line in f]


def main(folder):
    debs = glob.glob(os.path.join(folder, "sysctrlservice-dbus_*.deb"))
    if len(debs) != 1:
        print("FAIL: expected one sysctrlservice-dbus package in", folder, "found", debs)
        return 1
    failures = []
    with tempfile.TemporaryDirectory(prefix="sysctrl-groups.") as scratch:
        root = os.path.join(scratch, "root")
        control = os.path.join(scratch, "control")
        subprocess.run(["dpkg-deb", "--extract", debs[0], root], check=True)
        subprocess.run(["dpkg-deb", "--control", debs[0], control], check=True)
        named, policies = policy_groups(root)
        print("policies:", policies, "name the groups", sorted(named))
        if not named:
            failures.append("the package installs no bus policy that names a group")

        added = [call[1:] for call in run_postinst(control, scratch, False) if call[0] == "addgroup"]
        print("postinst on a machine without the groups: addgroup", added)
        created = set()
        for arguments in added:
            if len(arguments) != 2 or arguments[0] != "--system":
                failures.append("addgroup %s: not one system group" % " ".join(arguments))
            created.add(arguments[-1])
        if created != named:
            failures.append("the postinst creates %s, the policy names %s" % (sorted(created), sorted(named)))

        again = [call for call in run_postinst(control, scratch, True) if call[0] == "addgroup"]
        print("postinst on a machine with the groups: addgroup", again)
        if again:
            failures.append("the postinst adds groups that exist: %s" % again)
    for failure in failures:
        print("FAIL:", failure)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
