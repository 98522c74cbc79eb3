"""A watch whose wall clock and time zone a test turns while its programs run."""

import os
import pathlib
import re
import struct

from watch import WatchTest

HOUR, YEAR = 3600, 365 * 86400
AHEAD_AND_BACK = {"an hour ahead": HOUR, "an hour back": -HOUR, "forty years ahead": 40 * YEAR,
                  "forty years back": -40 * YEAR}


def timers(pid):
    """What the kernel knows of the timers of a process: for each the clock and how often it has run out."""
    found = []
    for info in pathlib.Path("/proc/%d/fdinfo" % pid).iterdir():
        try:
            values = dict(re.findall(r"^(clockid|ticks): *(\d+)$", info.read_text(), re.MULTILINE))
        except OSError:
            continue  # closed meanwhile
        if values:
            found.append((int(values["clockid"]), int(values["ticks"])))
    return found


class TurnedWatchTest(WatchTest):
    def up(self):
        self.clock, self.localtime = self.root / "clock", self.root / "localtime"
        self.turn(0)
        self.move_to("UTC")
        self.environment.update(LD_PRELOAD=os.environ["TURNED_CLOCK_LIBRARY"], TURNED_CLOCK=str(self.clock),
                                TURNED_LOCALTIME=str(self.localtime))
        del self.environment["TZ"]
        super().up()

    def turn(self, seconds):
        """The wall clock of every program of the watch, wfctl's too, is that far ahead of the machine's."""
        mode = "r+b" if self.clock.exists() else "wb"
        with open(self.clock, mode) as clock:
            clock.write(struct.pack("=q", seconds))

    def move_to(self, zone):
        """The local time of the watch's machine, as a program that sets it does: a new link in one step."""
        new = self.root / "localtime.new"
        new.symlink_to("/usr/share/zoneinfo/" + zone)
        new.rename(self.localtime)
