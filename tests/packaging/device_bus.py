"""A system bus of a device, with the installed policy and the users of the table, who need not be this machine's.

The bus finds the users in files (nss_wrapper); other processes become them by number. That takes root.
"""

import json
import os
import pathlib
import subprocess
import sys
import unittest

from installation import PREFIX, plain_environment, run

WRAPPER = "libnss_wrapper.so"
CONFIG = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>system</type>
  <listen>unix:path={folder}/bus</listen>
  <auth>EXTERNAL</auth>
  <!-- As in the bus's own system.conf. -->
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
  </policy>
  <includedir>{policies}</includedir>
</busconfig>
"""


def has_wrapper():
    """Whether programs can be told other users than this machine's."""
    return subprocess.run(["true"], env={"LD_PRELOAD": WRAPPER}, stderr=subprocess.PIPE).stderr == b""


needs_users = unittest.skipUnless(os.geteuid() == 0 and has_wrapper(),
                                  "to become other users takes root and nss_wrapper")


class Users:
    """The users and groups that the installed files make, below a folder."""

    def __init__(self, folder):
        (folder / "etc").mkdir()
        (folder / "etc/passwd").write_text("root:x:0:0::/:/bin/sh\nnobody:x:65534:65534::/:/bin/sh\n")
        (folder / "etc/group").write_text("root:x:0:\nnogroup:x:65534:\n")
        run("systemd-sysusers", "--root=%s" % folder, PREFIX / "lib/sysusers.d/watch.conf")
        self.passwd = folder / "etc/passwd"
        self.group = folder / "etc/group"
        self.numbers = {line[0]: (int(line[2]), int(line[3])) for line in self._lines(self.passwd)}

    @staticmethod
    def _lines(path):
        return [line.split(":") for line in path.read_text().splitlines()]

    @property
    def environment(self):
        return {"LD_PRELOAD": WRAPPER, "NSS_WRAPPER_PASSWD": str(self.passwd), "NSS_WRAPPER_GROUP": str(self.group)}

    def becoming(self, user):
        """The start of a command line that runs as the user, with all groups of the user."""
        uid, gid = self.numbers[user]
        groups = [line[2] for line in self._lines(self.group) if user in line[3].split(",")]
        return ["setpriv", "--reuid=%d" % uid, "--regid=%d" % gid, "--groups=%s" % ",".join([str(gid)] + groups)]


class DeviceBus:
    """A running bus; close() ends it."""

    def __init__(self, folder):
        self.users = Users(folder)
        self.address = "unix:path=%s/bus" % folder
        config = folder / "bus.conf"
        config.write_text(CONFIG.format(folder=folder, policies=PREFIX / "share/dbus-1/system.d"))
        with open(folder / "bus.log", "w") as log:
            self.daemon = subprocess.Popen(
                ["dbus-daemon", "--config-file=%s" % config, "--nofork", "--nopidfile", "--print-address"],
                stdout=subprocess.PIPE, stderr=log, env=plain_environment(**self.users.environment))
        assert self.daemon.stdout.readline(), (folder / "bus.log").read_text()

    def close(self):
        self.daemon.terminate()
        self.daemon.wait()
        self.daemon.stdout.close()


class BusUser:
    """A process of a user with a connection to the bus; its methods are the actions of bus_user.py."""

    def __init__(self, bus, user):
        self.process = subprocess.Popen(
            bus.users.becoming(user) + [sys.executable, "-c", pathlib.Path(__file__).with_name("bus_user.py").read_text()],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
            env=plain_environment(DBUS_SYSTEM_BUS_ADDRESS=bus.address))

    def __getattr__(self, action):
        def ask(*arguments):
            self.process.stdin.write(json.dumps([action, *arguments]) + "\n")
            self.process.stdin.flush()
            return json.loads(self.process.stdout.readline())
        return ask

    def close(self):
        self.process.stdin.close()
        self.process.terminate()
        self.process.wait()
        self.process.stdout.close()
