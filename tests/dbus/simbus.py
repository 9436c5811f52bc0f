"""The desk host serving on a private bus, for the bus tests written in Python.

SimOnBus starts a dbus-daemon of its own (never the machine's), then `sysctrl-sim --dbus` on it,
and waits until the bus name is owned. Commands run with `env` reach that bus as the session bus
(or the system bus); `send` feeds script lines to the desk host; `stop` ends both as SIGTERM would.
"""
import os
import shutil
import signal
import subprocess
import tempfile
import time

BUS_NAME = "zorbel.lm.sysctrlservice"
OBJECT_PATH = "/zorbel/lm/sysctrlservice"
INTERFACE = "zorbel.lm.sysctrlservice2"
# Only a guard against a hang: every wait ends as soon as its event comes.
HANG_GUARD = 30

SESSION_POLICY = """
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>"""

# What a system bus allows before any service's own policy file is read.
SYSTEM_POLICY = """
  <policy context="default">
    <allow user="*"/>
    <deny own="*"/>
    <deny send_type="method_call"/>
    <allow send_type="signal"/>
    <allow send_requested_reply="true" send_type="method_return"/>
    <allow send_requested_reply="true" send_type="error"/>
    <allow receive_type="method_call"/>
    <allow receive_type="method_return"/>
    <allow receive_type="error"/>
    <allow receive_type="signal"/>
    <allow send_destination="org.freedesktop.DBus" send_interface="org.freedesktop.DBus"/>
    <allow send_destination="org.freedesktop.DBus"
           send_interface="org.freedesktop.DBus.Introspectable"/>
  </policy>"""


class SimOnBus:
    def __init__(self, sim, kind="session", policy_text=None, options=(),
                 stdout=subprocess.DEVNULL):
        self.kind = kind
        self.directory = tempfile.mkdtemp(prefix="sysctrl-bus.")
        os.chmod(self.directory, 0o755)  # callers of other users reach the socket
        include = ""
        if policy_text is not None:
            with open(os.path.join(self.directory, "policy.conf"), "w") as f:
                f.write(policy_text)
            include = "<include>%s/policy.conf</include>" % self.directory
        config = os.path.join(self.directory, "bus.conf")
        with open(config, "w") as f:
            f.write('<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"'
                    ' "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">\n'
                    "<busconfig><type>%s</type><listen>unix:dir=%s</listen><auth>EXTERNAL</auth>"
                    "%s%s</busconfig>\n"
                    % (kind, self.directory, SYSTEM_POLICY if kind == "system" else SESSION_POLICY,
                       include))
        self.daemon = subprocess.Popen(
            ["dbus-daemon", "--config-file=" + config, "--nofork", "--print-address=1"],
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.address = self.daemon.stdout.readline().strip()
        self.env = dict(os.environ)
        variable = "DBUS_SYSTEM_BUS_ADDRESS" if kind == "system" else "DBUS_SESSION_BUS_ADDRESS"
        self.env[variable] = self.address
        self.busctl = ["busctl", "--system" if kind == "system" else "--user"]
        self.sim = subprocess.Popen(
            [sim, "--log-level", "3000"] + list(options) + ["--dbus", kind],
            stdin=subprocess.PIPE, stdout=stdout, stderr=subprocess.PIPE, text=True, env=self.env)
        deadline = time.monotonic() + HANG_GUARD
        while not self.owned():
            if time.monotonic() > deadline or self.sim.poll() is not None:
                self.stop()
                raise RuntimeError("the desk host never served " + BUS_NAME)
            time.sleep(0.05)

    def owned(self):
        status = subprocess.run(self.busctl + ["status", BUS_NAME], env=self.env,
                                stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        return status.returncode == 0

    def call(self, method, *args, user=None):
        """busctl call as root, or through setpriv as `user` (uid, gid, [groups])."""
        command = self.busctl + ["call", BUS_NAME, OBJECT_PATH, INTERFACE, method] + list(args)
        if user is not None:
            uid, gid, groups = user
            command = ["setpriv", "--reuid=%d" % uid, "--regid=%d" % gid,
                       "--groups=" + ",".join(map(str, groups)) if groups else "--clear-groups",
                       ] + command
        return subprocess.run(command, env=self.env, capture_output=True, text=True,
                              timeout=HANG_GUARD)

    def send(self, line):
        self.sim.stdin.write(line + "\n")
        self.sim.stdin.flush()

    def stop(self):
        """Ends the desk host with SIGTERM and the bus; the desk host's exit status."""
        status = None
        if self.sim.poll() is None:
            self.sim.send_signal(signal.SIGTERM)
        try:
            status = self.sim.wait(timeout=HANG_GUARD)
        except subprocess.TimeoutExpired:
            self.sim.kill()
        self.daemon.terminate()
        self.daemon.wait(timeout=HANG_GUARD)
        shutil.rmtree(self.directory, ignore_errors=True)
        return status
