#!/usr/bin/env python3
"""sysctrl-sim --dbus session end to end: the running object matches the repository's
introspection XML, busctl calls answer, busctl monitor shows results and unsolicited reports as
signals, and SIGTERM ends the desk host cleanly."""
import subprocess
import sys
import time
import xml.etree.ElementTree as ET

import simbus


def members(root):
    """Methods and signals of the interface: name -> list of (name, type, direction)."""
    for interface in root.iter("interface"):
        if interface.get("name") == simbus.INTERFACE:
            return {(element.tag, element.get("name")):
                    [(a.get("name"), a.get("type"), a.get("direction", "out"))
                     for a in element.findall("arg")]
                    for element in interface if element.tag in ("method", "signal")}
    return {}


def main(sim, xml_path):
    simbus.require("busctl")
    failures = []
    bus = simbus.SimOnBus(sim)
    try:
        introspected = subprocess.run(
            bus.busctl + ["introspect", "--xml-interface", simbus.BUS_NAME, simbus.OBJECT_PATH],
            env=bus.env, capture_output=True, text=True, timeout=simbus.HANG_GUARD).stdout
        running = members(ET.fromstring(introspected))
        described = members(ET.parse(xml_path).getroot())
        if len(described) != 52 + 25:
            failures.append("the XML describes %d members, not 77" % len(described))
        for key in sorted(set(running) | set(described)):
            if running.get(key) != described.get(key):
                failures.append("%s %s: running %s, described %s"
                                % (key[0], key[1], running.get(key), described.get(key)))

        monitor = subprocess.Popen(bus.busctl + ["monitor", simbus.BUS_NAME], env=bus.env,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        monitor.stderr.readline()  # "Monitoring bus message stream.": busctl now sees everything
        reply = bus.call("ControlOpc", "s", "getOpcState")
        if reply.stdout.strip() != 'is 0 "0"':
            failures.append("ControlOpc replied %r" % reply.stdout)
        bus.send("oledError 4")
        # Read up to the error report's mask, the last thing of the last signal wanted.
        text, deadline = "", time.monotonic() + simbus.HANG_GUARD
        while time.monotonic() < deadline:
            line = monitor.stdout.readline()
            text += line
            if "Member=OledErrorResult" in text and line.strip() == "INT32 4;":
                break
        monitor.terminate()
        if "Member=ControlOpcResult" not in text:
            failures.append("busctl monitor showed no ControlOpcResult")
        report = text.split("Member=OledErrorResult", 1)[-1]
        if [w.strip() for w in report.splitlines() if "INT32" in w] != ["INT32 -1;"] * 2 + ["INT32 4;"]:
            failures.append("OledErrorResult did not carry -1, -1 and the mask 4: %r" % report)
    finally:
        status = bus.stop()
    if status != 0:
        failures.append("sysctrl-sim ended with %s after SIGTERM" % status)
    for failure in failures:
        print("FAIL:", failure)
    return 1 if failures else 0


if __name__ == "__main__":
    simbus.run(main, sys.argv[1], sys.argv[2])
