#!/usr/bin/python3
"""Kills the service, the capture application or the bus at random moments under traffic.

    WATCH_PREFIX=BUILD WATCH_EXAMPLES=docs/examples WATCH_KILLS=N random_kills.py

Faces are edited, pictures added and deleted, durations kept. After each kill nothing that was answered is lost,
every file is whole, and the next change is made. In the end the databases are sound, the preview is that of the
last document, and no program of the watch is left. N programs are killed: 10, and 10,000 in a long campaign.
"""

import collections
import os
import pathlib
import random
import re
import signal
import sqlite3
import sys
import threading
import time
import unittest
import xml.etree.ElementTree

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "system/peers"))

from watch import C1, CAPTURE, EDITOR, FACES, MANAGER, SERVICE, Refused, WatchTest, wait_for  # noqa: E402

BUS = "org.freedesktop.DBus"
TARGETS = (SERVICE[0], SERVICE[0], CAPTURE[0], BUS)
STORE = (SERVICE[0], "evaluation-helper-port")
APPLICATION = ("com.example.evaluation", "back")
INSCRIPTION = "AUTOMATIC"
PATIENCE = 30
SHORT_LIFE = 3  # seconds, and some: a bus that keeps dying young is given up
BUS_IS_GONE = (OSError, EOFError, TimeoutError)


class Change:
    """What is asked of the service again and again, with a number that rises."""

    identity, trusted = None, True

    def __init__(self, watch):
        self.watch = watch
        self.answered = self.asked = 0
        self.connect()

    def connect(self):
        self.peer = self.watch.peer(self.identity, trusted=self.trusted)

    def connect_again(self):
        self.peer.close()  # it has its name as long as its bus is there
        try:
            self.connect()
        except (Refused, *BUS_IS_GONE):
            return False
        return True

    def ask(self):
        """Raises Refused or one of BUS_IS_GONE when the service or the bus dies with the message."""
        self.asked += 1
        self.peer.received.clear()
        self.send(self.asked)
        # The answer leaves before the platform says that the message was taken.
        if any(self.is_success(message.bundle) for message in self.peer.received):
            self.answered = self.asked

    @staticmethod
    def is_success(answer):
        return answer.get("status") == "success"

    def look(self):
        """What there is now is of the last number that was answered, or of a later one, and whole."""
        there = self.number_there()
        self.watch.assertGreaterEqual(there, self.answered)
        self.watch.assertLessEqual(there, self.asked)


class EditedFace(Change):
    identity = MANAGER

    def send(self, number):
        self.watch.send(self.peer, {"type": "watch-setting-updated", "pkgid": C1, "data/label": "Mirel",
                                    "data/xml_data": self.document(number)})

    def document(self, number):
        return self.watch.result_xml(C1).replace(INSCRIPTION, "NO %06d" % number)

    def number_there(self):
        result = self.watch.rw(C1, C1 + "_result.xml")
        if not result.exists():
            return 0
        text = result.read_text()
        there = self.number_in(text)
        self.watch.assertEqual(text, self.document(there))
        return there

    @staticmethod
    def number_in(text):
        return int(re.search(r"NO (\d{6})", text).group(1))

    def look(self):
        super().look()
        if not self.answered:
            return
        flat = self.watch.rw(C1, "watchface.xml").read_text()
        xml.etree.ElementTree.fromstring(flat)
        self.watch.assertGreaterEqual(self.number_in(flat), self.answered)
        self.watch.assertLessEqual(self.number_in(flat), self.asked)


class AddedPicture(Change):
    """Once a picture is added all others are deleted."""

    identity = EDITOR
    bg_type, place = "watch-bg-gallery-u1", "shared/trusted/theme/GalleryBackgrounds/U1"

    def __init__(self, watch):
        super().__init__(watch)
        self.kept, self.deleted = set(), set()  # names, as it was answered
        self.folder = watch.root / "pictures"
        self.folder.mkdir()

    @staticmethod
    def name(number):
        return "%06d.png" % number

    @staticmethod
    def content(name):
        return name.encode() * 1000

    def send(self, number):
        name = self.name(number)
        path = self.folder / name
        path.write_bytes(self.content(name))
        if self.is_done("watch-bg-add", str(path)):
            others = self.names_there() - {name}
            self.kept = {name}
            if others and self.is_done("watch-bg-del", sorted(others)):
                self.deleted |= others
        path.unlink()

    def is_done(self, kind, pictures):
        before = len(self.peer.received)
        self.watch.send(self.peer, {"type": kind, "bg_type": self.bg_type, "bg_list": pictures})
        return any(self.is_success(message.bundle) for message in self.peer.received[before:])

    def names_there(self):
        folder = self.watch.root / "apps" / FACES / self.place
        return {path.name for path in folder.glob("*") if not path.name.startswith(".watch-new-")}

    def number_there(self):
        names = self.names_there()
        self.watch.assertLessEqual(self.kept, names)
        self.watch.assertEqual(self.deleted & names, set())
        for name in names:
            path = self.watch.root / "apps" / FACES / self.place / name
            self.watch.assertEqual(path.read_bytes(), self.content(name))
        return max((int(name.split(".")[0]) for name in names), default=0)


class KeptDuration(Change):
    identity, trusted = APPLICATION, False
    request = {"evaluation-helper-op": "evaluation-helper-op-save-duration", "evaluation-helper-watchface-name": C1}

    def send(self, number):
        self.peer.send(*STORE, {**self.request, "evaluation-helper-data-duration": str(number)}, trusted=False)

    @staticmethod
    def is_success(answer):
        return answer.get("evaluation-helper-ret") == "0"

    def number_there(self):
        key = "%s+%s+evaluation-helper-data-duration=" % (APPLICATION[0], C1)
        stored = self.watch.wfctl("pref", "list", SERVICE[0]).splitlines()
        return next((int(line[len(key):]) for line in stored if line.startswith(key)), 0)


class AWatchThatIsKilled(WatchTest):
    def setUp(self):
        self.addCleanup(lambda: self.assertEqual(self.programs(), []))  # once the watch is down
        super().setUp()

    def test_loses_nothing_that_it_answered(self):
        kills = int(os.environ.get("WATCH_KILLS", "10"))
        self.moments = random.Random(20)
        self.hits = collections.Counter()
        self.bus_killed = time.monotonic()
        self.changes = [kind(self) for kind in (EditedFace, AddedPicture, KeptDuration)]
        begin = time.monotonic()
        while sum(self.hits.values()) < kills:
            change = self.moments.choice(self.changes)
            self.kill_during(change)
            for each in self.changes:
                each.look()  # before the next change overwrites what it lost
            self.ask_until_answered(change)
            change.look()
        seconds = time.monotonic() - begin
        print("%d kills in %.1f s, %.1f a second: %s" % (kills, seconds, kills / seconds, dict(self.hits)))
        for change in self.changes:
            self.ask_until_answered(change)
            change.look()
        self.assert_databases_are_sound()
        self.assert_preview_is_drawn_again()

    def kill_during(self, change):
        target, pid = self.target()
        killer = threading.Timer(self.moments.uniform(0, 0.03), self.kill_process, (target, pid))
        killer.start()
        try:
            change.ask()
        except (Refused, *BUS_IS_GONE):
            pass  # it died with the message
        killer.join()
        if target == BUS:
            self.bus_killed = time.monotonic()
            wait_for(lambda: not os.path.exists("/proc/%d" % pid))
            for other in self.changes:
                wait_for(other.connect_again, PATIENCE)

    def target(self):
        """What is killed, of what runs."""
        target = self.moments.choice(TARGETS)
        if target == BUS and time.monotonic() - self.bus_killed < SHORT_LIFE:
            target = SERVICE[0]
        pid = self.pid_of(target)
        return (target, pid) if pid else (SERVICE[0], wait_for(lambda: self.pid_of(SERVICE[0]), PATIENCE))

    def kill_process(self, target, pid):
        try:
            os.kill(pid, signal.SIGKILL)
            self.hits[target] += 1
        except ProcessLookupError:
            pass  # it ended by itself

    @staticmethod
    def ask_until_answered(change):
        def is_answered():
            try:
                change.ask()
            except Refused:
                pass  # it was killed only now
            except BUS_IS_GONE:
                wait_for(change.connect_again, PATIENCE)
            return change.answered == change.asked
        wait_for(is_answered, PATIENCE)

    def assert_databases_are_sound(self):
        databases = list(self.root.rglob("*.db"))
        self.assertIn(self.root / "common/keys.db", databases)
        for path in databases:
            database = sqlite3.connect(path)
            self.assertEqual(database.execute("PRAGMA integrity_check").fetchall(), [("ok",)], path)
            database.close()

    def assert_preview_is_drawn_again(self):
        expected = self.drawing(C1, self.language, 24)
        wait_for(lambda: self.preview(C1).exists() and self.preview(C1).read_bytes() == expected, PATIENCE)

    def programs(self):
        """What still runs of this watch."""
        left = []
        for process in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                if ("WATCH_ROOT=%s\0" % self.root).encode() in (process / "environ").read_bytes():
                    left.append((process / "cmdline").read_text())
            except OSError:
                pass  # it ended, or is not ours
        return left


if __name__ == "__main__":
    unittest.main()
