"""A private watch for one test, and what the tests look at on it."""

import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

PREFIX = pathlib.Path(os.environ["WATCH_PREFIX"])
sys.path.insert(0, os.environ["WATCH_EXAMPLES"])

from peer import Peer, Refused, port_name  # noqa: E402

FACES = "com.corvane.watchface"
SERVICE = ("com.corvane.watchface-service", "watchface-service::localport")
MANAGER = ("com.corvane.w-manager-service", "w-manager-service::localport")
EDITOR = ("com.corvane.watchface-editor", "watch-face-editor::localport")
HOME = ("com.corvane.w-home", "w-home::localport")
SETTINGS = ("com.corvane.watch-utils.setting-list", "clocksetting::localport")
CAPTURE = ("com.corvane.watchface-capture", "watchface-capture::localport")
BACKUP_AGENT = ("com.corvane.watch-utils.service", "watch-utils-service::localport")
C1 = "com.corvane.watchface-mirel-c1"
C4 = "com.corvane.watchface-mirel-c4"
E1 = "com.corvane.watchface-mirel-e1"
U1 = "com.corvane.watchface-mirel-u1"


def wait_for(condition, timeout=15):
    """What the condition answers, once that is true; fails after the deadline."""
    deadline = time.monotonic() + timeout
    while True:
        answer = condition()
        if answer:
            return answer
        if time.monotonic() > deadline:
            raise AssertionError("not true within %s s: %s" % (timeout, condition))
        time.sleep(0.01)


class WatchTest(unittest.TestCase):
    """Each test has a watch of its own, taken down afterwards."""

    language = "en_GB.UTF-8"
    under = ()  # the command that wfctl, and with it the watch, runs under

    def setUp(self):
        self.root = pathlib.Path(tempfile.mkdtemp(prefix="watch-system-"))
        self.addCleanup(shutil.rmtree, self.root, ignore_errors=True)
        environment = {k: v for k, v in os.environ.items()
                       if k not in ("LC_ALL", "LC_TIME", "TZ", "DBUS_SESSION_BUS_ADDRESS", "WATCH_ROOT")}
        self.environment = dict(environment, LANG=self.language, TZ="UTC", NO_COLOR="1")
        self.addCleanup(self.wfctl, "down", "--root", self.root)
        self.up()

    def up(self):
        self.wfctl("up", "--root", self.root)
        lines = self.wfctl_shell("env")
        self.environment.update(line.split("=", 1) for line in lines.splitlines()
                                if line.startswith(("DBUS_SESSION_BUS_ADDRESS=", "WATCH_ROOT=", "WATCH_RESOURCES=")))

    def wfctl(self, *arguments, status=0):
        done = subprocess.run([*self.under, PREFIX / "bin/wfctl", *map(str, arguments)], env=self.environment, timeout=60,
                              capture_output=True, text=True, stdin=subprocess.DEVNULL)
        self.assertEqual(done.returncode, status, done.stderr + done.stdout)
        return done.stdout

    def wfctl_shell(self, command):
        script = '. "$1/watch.env" && exec %s' % command
        return subprocess.run(["sh", "-c", script, "sh", self.root], env=self.environment, timeout=60, check=True,
                              capture_output=True, text=True).stdout

    def peer(self, identity, trusted=True):
        app, port = identity
        peer = Peer(app, port, address=self.environment["DBUS_SESSION_BUS_ADDRESS"], trusted=trusted)
        self.addCleanup(peer.close)
        return peer

    def stranger(self):
        return self.peer((None, None))

    # --- files ---------------------------------------------------------------------------------------------

    def rw(self, name, file=""):
        return self.root / "apps" / FACES / "shared/data/watchlist" / name / file

    def ro(self, name, file=""):
        return pathlib.Path(self.environment["WATCH_RESOURCES"]) / FACES / "shared/res/watchlist" / name / file

    def result_xml(self, name):
        return self.ro(name, name + "_result.xml").read_text()

    def preview(self, name):
        return self.rw(name, name + ".png")

    def shipped(self):
        """The names of the watch's own faces, in the order in which the service goes through them."""
        return sorted(folder.name for folder in self.ro("").iterdir())

    def drawing(self, name, language, hours):
        """The preview as the document in the read/write area describes it, drawn without the watch."""
        picture = self.root / "drawing.png"
        subprocess.run([PREFIX / "libexec/watch/watchface-capture", "--draw", "--language", language, "--hours",
                        str(hours), "--timezone", self.wfctl("setting", "get", "timezone").strip(), "--faces",
                        self.ro(""), self.rw(name, "watchface.xml"), picture], timeout=60, check=True)
        return picture.read_bytes()

    def tree(self):
        """Every file below the root that a message may change, with its content."""
        apps = self.root / "apps"
        return {str(p.relative_to(apps)): p.read_bytes() for p in apps.rglob("*")
                if p.is_file() and not p.name.startswith("prefs.db")} if apps.exists() else {}

    def log(self):
        return (self.root / "watch.log").read_text(errors="replace")

    def wait_for_log(self, text, count=1):
        wait_for(lambda: self.log().count(text) >= count)

    def starts_of(self, app):
        """How often the bus has started the application."""
        return self.log().count("Successfully activated service '%s'" % app)

    def captured(self):
        """The faces whose captures were finished, in order."""
        return re.findall(r"messageType = \[watch-capture-finished\], watch_name = \[(.*)\]", self.log())

    def wait_for_captures(self, count):
        wait_for(lambda: len(self.captured()) >= count)

    def assert_captured(self, names):
        """These, in whatever order, and no others: a capture that is asked for now comes behind them."""
        self.assert_nothing_more()
        self.wfctl("preview", "request", C1)
        self.wait_for_captures(len(names) + 1)
        *before, last = self.captured()
        self.assertEqual(sorted(before), sorted(names))
        self.assertEqual(last, C1)

    # --- processes -----------------------------------------------------------------------------------------

    def pid_of(self, app):
        """The process that owns the application's name, or None."""
        from jeepney.bus_messages import message_bus
        peer = self.stranger()
        try:
            return peer.call(message_bus.GetConnectionUnixProcessID(app))[0]
        except Refused:
            return None
        finally:
            peer.close()

    def restart_service(self):
        """Ends it as a device does, and has the next message start it."""
        self.kill(SERVICE[0], signal.SIGTERM)
        self.wfctl("send", "--as", HOME[0], SERVICE[0], "type=watch-req-watchlists")

    def kill(self, app, number=signal.SIGKILL):
        pid = self.pid_of(app)
        os.kill(pid, number)
        wait_for(lambda: self.pid_of(app) != pid)
        return pid

    def send(self, peer, bundle, **claims):
        peer.send(*SERVICE, bundle, **claims)

    def assert_received(self, peer, *bundles, from_app=SERVICE):
        """Exactly these messages, in this order, with these keys and none beside them."""
        got = [message.bundle for message in peer.wait(len(bundles))]
        self.assertEqual(got, list(bundles))
        for message in peer.received:
            self.assertEqual((message.sender, message.port), from_app)

    def assert_nothing_more(self, *peers):
        """A round trip through the service ends after all that it sent before."""
        probe = self.stranger()
        from jeepney import DBusAddress, new_method_call
        ping = DBusAddress("/", bus_name=SERVICE[0], interface="org.freedesktop.DBus.Peer")
        probe.call(new_method_call(ping, "Ping"))
        for peer in peers:
            before = len(peer.received)
            peer.call(new_method_call(DBusAddress("/org/freedesktop/DBus", bus_name="org.freedesktop.DBus",
                                                  interface="org.freedesktop.DBus"), "GetId"))
            self.assertEqual(peer.received[before:], [])
