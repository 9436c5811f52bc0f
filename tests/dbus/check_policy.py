#!/usr/bin/env python3
"""The system-bus policy, on a private bus of the system type: every method as a caller outside
the groups (refused), in the service group (accepted for "read" and "tune" methods only), in the
factory group and as root (accepted). The access of each method comes from the introspection XML.

The policy names the groups sysctrl-factory and sysctrl-service, which a test machine lacks; the
test's copy names two groups that exist instead, and the callers get them through setpriv.

Owning the name on a system bus and calling as other users takes root. A user who is not runs the
test as root of a user namespace of their own: uid and gid 0 there are the user's, 1 to 65536 their
subordinate ids (/etc/subuid, /etc/subgid), so the bus sees the same users and groups as it would
on the machine, and nothing runs with the machine's root privileges."""
import grp
import os
import pwd
import subprocess
import sys
import xml.etree.ElementTree as ET

import simbus

NOBODY = 65534
# The ids a user namespace maps besides 0: nobody and the stand-in groups must be among them.
MAPPED = 65536
GROUP_NAMES = ("sysctrl-factory", "sysctrl-service")

# A busctl argument list of zero values for a signature of the interface.
ZERO = {"i": ["0"], "u": ["0"], "y": ["0"], "s": [""], "ay": ["0"], "a(ayay)": ["0"]}


def arguments(method):
    types = [a.get("type") for a in method.findall("arg") if a.get("direction") == "in"]
    values = []
    for t in types:
        values += ZERO[t]
    return ["".join(types)] + values if types else []


def main(sim, xml_path, policy_path):
    if os.geteuid() != 0:
        return in_user_namespace(sim, xml_path, policy_path)
    simbus.require("busctl", "setpriv")
    text = open(policy_path).read()
    # Two existing groups, neither root's nor nobody's, stand in for the policy's two groups.
    stand_ins = [g for g in grp.getgrall() if 0 < g.gr_gid < NOBODY - 1][:2]
    for name in GROUP_NAMES:
        if text.count('group="%s"' % name) != 1:
            print("FAIL: the policy should have one section for", name)
            return 1
    for name, stand_in in zip(GROUP_NAMES, stand_ins):
        text = text.replace('group="%s"' % name, 'group="%s"' % stand_in.gr_name)
    factory, service = (g.gr_gid for g in stand_ins)
    callers = {"outsider": (NOBODY, NOBODY, []), "service": (NOBODY, NOBODY, [service]),
               "factory": (NOBODY, NOBODY, [factory]), "root": None}

    failures = []
    denials = 0
    bus = simbus.SimOnBus(sim, "system", text)
    try:
        for method in ET.parse(xml_path).getroot().iter("method"):
            access = method.find("annotation").get("value")
            denials += check(bus, method.get("name"), access, arguments(method), callers, failures)
    finally:
        bus.stop()
    for failure in failures:
        print("FAIL:", failure)
    print("%d calls refused of %d" % (denials, 4 * len(ET.parse(xml_path).getroot().findall(".//method"))))
    return 1 if failures else 0


def subordinate_start(table, names):
    """The first id of a range of at least MAPPED ids that `table` gives one of `names`."""
    try:
        lines = open(table).read().split()
    except OSError:
        lines = []
    for line in lines:
        fields = line.split(":")
        if len(fields) == 3 and fields[0] in names and int(fields[2]) >= MAPPED:
            return int(fields[1])
    user = names[0]
    raise simbus.SetupError(
        "%s has no range of %d subordinate ids in %s, which the test needs to call as other users "
        "without root: sudo usermod --add-subuids 100000-165535 --add-subgids 100000-165535 %s"
        % (user, MAPPED, table, user))


def in_user_namespace(sim, xml_path, policy_path):
    """Runs this test again as root of a new user namespace; its exit status."""
    simbus.require("unshare", "newuidmap", "newgidmap")
    names = [pwd.getpwuid(os.getuid()).pw_name, str(os.getuid())]
    uid_start = subordinate_start("/etc/subuid", names)
    gid_start = subordinate_start("/etc/subgid", names)
    # The shell tells when it is in the new namespace, then waits until the maps are written: the
    # test must be started (exec) as uid 0 of the namespace to keep its capabilities there.
    child = subprocess.Popen(
        ["unshare", "--user", "--", "sh", "-c", 'echo; read go && exec "$@"', "sh",
         sys.executable, os.path.abspath(__file__), sim, xml_path, policy_path],
        stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
        preexec_fn=simbus._die_with_parent)
    try:
        if not child.stdout.readline():
            raise simbus.SetupError("unshare --user failed (its message is above): this machine "
                                    "lets no user make a user namespace")
        for tool, own, start in (("newuidmap", os.getuid(), uid_start),
                                 ("newgidmap", os.getgid(), gid_start)):
            mapped = subprocess.run([tool, str(child.pid), "0", str(own), "1", "1", str(start),
                                     str(MAPPED)], capture_output=True, text=True)
            if mapped.returncode != 0:
                raise simbus.SetupError("%s failed: %s" % (tool, mapped.stderr.strip()))
        child.stdin.write("go\n")
        child.stdin.close()
        for line in child.stdout:
            print(line, end="")
        return child.wait()
    finally:
        if child.poll() is None:
            child.terminate()
            child.wait()


def check(bus, name, access, args, callers, failures):
    """Calls one method as every caller; the number of refusals."""
    denials = 0
    for caller, user in callers.items():
        allowed = caller in ("root", "factory") or (caller == "service" and access in ("read", "tune"))
        result = bus.call(name, *args, user=user)
        denied = "Access denied" in result.stderr
        denials += denied
        if denied == allowed:
            failures.append("%s as %s: %s" % (name, caller, (result.stdout + result.stderr).strip()))
    return denials


if __name__ == "__main__":
    simbus.run(main, *sys.argv[1:4])
