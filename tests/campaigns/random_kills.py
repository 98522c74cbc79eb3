#!/usr/bin/python3
"""Kills the service, the capture application or the bus at random moments while faces are edited.

    WATCH_PREFIX=BUILD WATCH_EXAMPLES=docs/examples WATCH_KILLS=N random_kills.py

After each kill nothing that was answered is lost, every document is whole, and the next edit is done. In the
end no program of the watch is left. N is 10; 10,000 in a long campaign.
"""

import os
import pathlib
import random
import re
import signal
import sys
import threading
import time
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "system/peers"))

from watch import C1, CAPTURE, MANAGER, SERVICE, Refused, WatchTest, wait_for  # noqa: E402

BUS = "org.freedesktop.DBus"
TARGETS = (SERVICE[0], SERVICE[0], CAPTURE[0], BUS)
INSCRIPTION = "AUTOMATIC"
PATIENCE = 30
SHORT_LIFE = 3  # seconds, and some


class AWatchThatIsKilled(WatchTest):
    def setUp(self):
        self.addCleanup(lambda: self.assertEqual(self.programs(), []))  # once the watch is down
        super().setUp()

    def test_loses_nothing_that_it_answered(self):
        kills = int(os.environ.get("WATCH_KILLS", "10"))
        moments = random.Random(20)
        self.answered = 0
        self.bus_killed = time.monotonic()
        self.manager = self.peer(MANAGER)
        begin = time.monotonic()
        for number in range(1, 2 * kills + 1, 2):
            self.kill_during_an_edit(moments, number)
            self.look(number)
            self.edit_until_answered(number + 1)
            self.look(number + 1)
        seconds = time.monotonic() - begin
        print("%d kills in %.1f s, %.1f a second" % (kills, seconds, kills / seconds))

    def kill_during_an_edit(self, moments, number):
        target = moments.choice(TARGETS)
        if target == BUS and time.monotonic() - self.bus_killed < SHORT_LIFE:
            target = SERVICE[0]  # a bus that keeps dying young is given up
        if target == BUS:
            self.bus_killed = time.monotonic()
        pid = self.pid_of(target)
        killer = threading.Timer(moments.uniform(0, 0.03), self.kill_process, (pid,))
        killer.start()
        try:
            self.edit(number)
        except (Refused, OSError, EOFError, TimeoutError):
            pass  # it died with the message
        killer.join()
        if target == BUS:
            wait_for(lambda: not os.path.exists("/proc/%d" % pid))
            self.manager = wait_for(self.manager_again, PATIENCE)

    @staticmethod
    def kill_process(pid):
        try:
            os.kill(pid, signal.SIGKILL)
        except (TypeError, ProcessLookupError):
            pass  # it was not running

    def manager_again(self):
        self.manager.close()  # it has its name as long as its bus is there
        try:
            return self.peer(MANAGER)
        except (Refused, OSError, EOFError):
            return None

    def edit(self, number):
        self.manager.received.clear()
        text = self.result_xml(C1).replace(INSCRIPTION, "NO %06d" % number)
        self.send(self.manager, {"type": "watch-setting-updated", "pkgid": C1, "data/label": "Mirel",
                                 "data/xml_data": text})
        # The answer leaves before the platform says that the message was taken.
        if any(message.bundle.get("status") == "success" for message in self.manager.received):
            self.answered = number

    def edit_until_answered(self, number):
        def edited():
            try:
                self.edit(number)
            except Refused:
                pass  # it was killed only now
            except (OSError, EOFError):
                self.manager = wait_for(self.manager_again, PATIENCE)
            return self.answered == number
        wait_for(edited, PATIENCE)

    def look(self, number):
        """The documents are of the last edit that was answered, or of a later one, and whole."""
        shipped = self.result_xml(C1)
        result = self.rw(C1, C1 + "_result.xml")
        if not result.exists():
            self.assertEqual(self.answered, 0)
            return
        text = result.read_text()
        there = int(re.search(r"NO (\d{6})", text).group(1))
        self.assertEqual(text, shipped.replace(INSCRIPTION, "NO %06d" % there))
        self.assertGreaterEqual(there, self.answered)
        self.assertLessEqual(there, number)
        if self.answered:
            flat = self.rw(C1, "watchface.xml").read_text()
            self.assertTrue(flat.rstrip().endswith("</watchface>"))

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
