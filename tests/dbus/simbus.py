"""The desk host serving on a private bus, for the bus tests written in Python.

SimOnBus starts a dbus-daemon of its own (never the machine's), then `sysctrl-sim --dbus` on it,
and waits until the bus name is owned. Commands run with `env` reach that bus as the session bus
(or the system bus); `send` feeds script lines to the desk host; `stop` ends both as SIGTERM would.

`run` wraps a test's main: a missing program or a desk host that never served ends the test with
one FAIL line instead of a traceback, and SIGTERM (a timeout) still runs the test's clean-up.
"""
import ctypes
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time

BUS_NAME = "zorbel.lm.sysctrlservice"
OBJECT_PATH = "/zorbel/lm/sysctrlservice"
INTERFACE = "zorbel.lm.sysctrlservice2"
# Only a guard against a hang: every wait ends as soon as its event comes.
HANG_GUARD = 30

# The Debian package of each program the bus tests start.
PACKAGES = {"dbus-daemon": "dbus", "dbus-send": "dbus", "busctl": "systemd",
            "gdbus": "libglib2.0-bin", "setpriv": "util-linux", "unshare": "util-linux",
            "newuidmap": "uidmap", "newgidmap": "uidmap"}

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


class SetupError(Exception):
    """The test could not get as far as checking anything."""


def require(*programs):
    """Fails with the packages to install when a program the test starts is missing."""
    missing = [p for p in programs if shutil.which(p) is None]
    if missing:
        packages = sorted({PACKAGES.get(p, p) for p in missing})
        raise SetupError("%s not found: install %s (scripts/install-deps.sh does)"
                         % (", ".join(missing), " ".join(packages)))


def _die_with_parent():
    """In a child before it runs its program: SIGTERM when the test ends, however it ends."""
    ctypes.CDLL(None, use_errno=True).prctl(1, signal.SIGTERM)  # PR_SET_PDEATHSIG


def temporary_folder(name):
    """A fresh folder named sysctrl-NAME.* in $TMPDIR (the suite's own folder under ctest)."""
    return tempfile.mkdtemp(prefix="sysctrl-%s." % name)


class SimOnBus:
    def __init__(self, sim, kind="session", policy_text=None, options=(),
                 stdout=subprocess.DEVNULL):
        require("dbus-daemon", "dbus-send")
        self.kind = kind
        self.daemon = None
        self.sim = None
        self.directory = temporary_folder("bus")
        try:
            self._start(sim, policy_text, options, stdout)
        except BaseException:
            self.stop()
            raise

    def _start(self, sim, policy_text, options, stdout):
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
                    % (self.kind, self.directory,
                       SYSTEM_POLICY if self.kind == "system" else SESSION_POLICY, include))
        self.daemon = subprocess.Popen(
            ["dbus-daemon", "--config-file=" + config, "--nofork", "--print-address=1"],
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
            preexec_fn=_die_with_parent)
        self.address = self.daemon.stdout.readline().strip()
        if not self.address:
            raise SetupError("dbus-daemon did not start: " + self.daemon.stderr.read().strip())
        self.env = dict(os.environ)
        variable = "DBUS_SYSTEM_BUS_ADDRESS" if self.kind == "system" else "DBUS_SESSION_BUS_ADDRESS"
        self.env[variable] = self.address
        self.busctl = ["busctl", "--system" if self.kind == "system" else "--user"]
        self.sim = subprocess.Popen(
            [sim, "--log-level", "3000"] + list(options) + ["--dbus", self.kind],
            stdin=subprocess.PIPE, stdout=stdout, stderr=subprocess.PIPE, text=True, env=self.env,
            preexec_fn=_die_with_parent)
        deadline = time.monotonic() + HANG_GUARD
        while not self.owned():
            if self.sim.poll() is not None:
                raise SetupError("the desk host ended with status %s before it served %s: %s"
                                 % (self.sim.returncode, BUS_NAME, self.sim.stderr.read().strip()))
            if time.monotonic() > deadline:
                raise SetupError("the desk host did not serve %s within %d s"
                                 % (BUS_NAME, HANG_GUARD))
            time.sleep(0.05)

    def owned(self):
        """Whether the name has an owner, asked of the bus itself (nothing about the owner's
        process is read, so this works where /sys has no cgroups)."""
        reply = subprocess.run(
            ["dbus-send", "--bus=" + self.address, "--print-reply", "--dest=org.freedesktop.DBus",
             "/org/freedesktop/DBus", "org.freedesktop.DBus.NameHasOwner", "string:" + BUS_NAME],
            capture_output=True, text=True, timeout=HANG_GUARD)
        if reply.returncode != 0:
            raise SetupError("the private bus did not answer NameHasOwner: " + reply.stderr.strip())
        return reply.stdout.split()[-2:] == ["boolean", "true"]

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
        """Ends the desk host with SIGTERM and the bus, removes the bus's folder; the desk host's
        exit status (None when it had to be killed or never started)."""
        status = None
        if self.sim is not None:
            if self.sim.poll() is None:
                self.sim.send_signal(signal.SIGTERM)
            try:
                status = self.sim.wait(timeout=HANG_GUARD)
            except subprocess.TimeoutExpired:
                self.sim.kill()
                self.sim.wait()
            self.sim = None
        if self.daemon is not None:
            self.daemon.terminate()
            try:
                self.daemon.wait(timeout=HANG_GUARD)
            except subprocess.TimeoutExpired:
                self.daemon.kill()
                self.daemon.wait()
            self.daemon = None
        shutil.rmtree(self.directory, ignore_errors=True)
        return status


def _terminated(number, frame):
    raise SystemExit("FAIL: ended by signal %d" % number)


def run(main, *args):
    """Runs a test's main and exits with its status; a setup failure or a missing program is one
    FAIL line and status 1. SIGTERM unwinds the test, so its `finally` clean-up runs."""
    signal.signal(signal.SIGTERM, _terminated)
    try:
        status = main(*args)
    except (SetupError, OSError, subprocess.SubprocessError) as failure:
        print("FAIL:", failure)
        status = 1
    sys.exit(status)
