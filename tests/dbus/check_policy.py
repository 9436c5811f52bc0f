#!/usr/bin/env python3
"""The system-bus policy, on a private bus of the system type: every method as a caller outside
the groups (refused), in the service group (accepted for "read" and "tune" methods only), in the
factory group and as root (accepted). The access of each method comes from the introspection XML.

The policy names the groups sysctrl-factory and sysctrl-service, which a test machine lacks; the
test's copy names two groups that exist instead, and the callers get them through setpriv."""
import grp
import sys
import xml.etree.ElementTree as ET

import simbus

NOBODY = 65534
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
    sys.exit(main(*sys.argv[1:4]))
