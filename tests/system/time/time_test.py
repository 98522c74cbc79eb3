"""The wall clock is turned, the time zone changes, and the watch rests: on real processes."""

import datetime
import json
import os
import signal
import subprocess
import time
import unittest

import retail_test
from jeepney import DBusAddress, new_method_call
from jeepney.bus_messages import message_bus
from turned_clock import AHEAD_AND_BACK, HOUR, YEAR, TurnedWatchTest, timers
from watch import C1, CAPTURE, HOME, MANAGER, SERVICE, WatchTest, wait_for

EXPIRED = " > update preview fallback timer expired!!\n"
DONE = " > update preview done!!\n"
MOST_LATE = 10
U9 = "com.corvane.watchface-mirel-u9"


class AnAwaitedCapture(TurnedWatchTest):
    """The test takes the capture application's place."""

    def setUp(self):
        super().setUp()
        self.manager, self.capture = self.peer(MANAGER), self.peer(CAPTURE)

    def request(self):
        self.capture.received.clear()
        self.send(self.manager, {"type": "watch-setting-updated", "pkgid": C1, "data/label": "Mirel",
                                 "data/xml_data": self.result_xml(C1)})
        self.assertEqual([message.bundle["pkgName"] for message in self.capture.wait()], [C1])

    def test_is_given_up_after_the_same_time_however_the_clock_is_turned(self):
        for number, (how, seconds) in enumerate(AHEAD_AND_BACK.items(), start=1):
            with self.subTest(how):
                self.turn(0)
                begin = time.monotonic()
                self.request()
                self.turn(seconds)
                self.wait_for_log(EXPIRED, number)
                self.assertGreaterEqual(time.monotonic() - begin, 0.5)
        self.assert_nothing_more()
        self.assertEqual(self.log().count(EXPIRED), len(AHEAD_AND_BACK))

    def test_ends_when_it_is_finished_however_the_clock_is_turned(self):
        for how, seconds in AHEAD_AND_BACK.items():
            with self.subTest(how):
                # On a busy machine one may be finished too late, but not all.
                self.assertTrue(any(self.ends_when_finished(seconds) for _ in range(MOST_LATE)))
        self.assert_nothing_more()

    def ends_when_finished(self, seconds):
        """Whether a capture, finished once the clock is turned, ended so and not because its time was over."""
        done, ended = self.log().count(DONE), self.ends()
        self.turn(0)
        self.request()
        self.turn(seconds)
        self.send(self.capture, {"type": "watch-capture-finished", "pkgid": C1})
        wait_for(lambda: self.ends() > ended)
        return self.log().count(DONE) > done

    def ends(self):
        log = self.log()
        return log.count(DONE) + log.count(EXPIRED)

    def test_is_given_up_once_when_its_time_runs_out_while_the_service_rests(self):
        pid = self.pid_of(SERVICE[0])
        self.request()
        os.kill(pid, signal.SIGSTOP)
        self.addCleanup(os.kill, pid, signal.SIGCONT)
        wait_for(lambda: any(ticks for _, ticks in timers(pid)) or EXPIRED in self.log())
        os.kill(pid, signal.SIGCONT)
        self.wait_for_log(EXPIRED)
        self.assert_nothing_more()
        self.assertEqual(self.log().count(EXPIRED), 1)


class ACaptureBeforeARest(WatchTest):
    def test_is_drawn_after_it(self):
        manager = self.peer(MANAGER)
        self.wfctl("preview", "request", C1)
        service, capture = self.pid_of(SERVICE[0]), self.pid_of(CAPTURE[0])
        self.rest(capture)
        self.preview(C1).unlink()
        self.send(manager, {"type": "watch-setting-updated", "pkgid": C1, "data/label": "Mirel",
                            "data/xml_data": self.result_xml(C1)})
        wait_for(lambda: any("status" in message.bundle for message in manager.wait(2, timeout=1)))
        self.rest(service)
        wait_for(lambda: any(ticks for _, ticks in timers(service)) or EXPIRED in self.log())
        os.kill(service, signal.SIGCONT)
        os.kill(capture, signal.SIGCONT)
        self.wait_for_captures(2)
        self.assertEqual(self.preview(C1).read_bytes(), self.drawing(C1, "en_GB", 24))
        self.assertEqual(self.starts_of(CAPTURE[0]), 1)

    def rest(self, pid):
        os.kill(pid, signal.SIGSTOP)
        self.addCleanup(lambda: os.path.exists("/proc/%d" % pid) and os.kill(pid, signal.SIGCONT))


class AHeldReply(retail_test.ARetailReset, TurnedWatchTest):
    def setUp(self):
        super().setUp()
        self.capture = self.peer(CAPTURE)

    def test_comes_after_the_same_time_when_the_clock_is_turned(self):
        names = self.shipped()
        begin = time.monotonic()
        reset = self.launch()
        wait_for(lambda: len(self.capture.wait(len(names))) >= len(names))
        self.turn(10 * YEAR)
        for name in names[1:]:
            self.send(self.capture, {"type": "watch-capture-finished", "pkgid": name})
        self.turn(-10 * YEAR)
        self.assertEqual(self.output(reset), retail_test.SUCCEEDED)
        self.assertGreaterEqual(time.monotonic() - begin, len(names) / 2)
        self.assertEqual(self.log().count(EXPIRED), 1)


class ALaunch(TurnedWatchTest):
    def test_is_tried_as_often_and_as_long_when_the_clock_is_turned(self):
        self.forget_how_to_start(CAPTURE[0])
        home = self.peer(HOME)
        begin = time.monotonic()
        self.send(home, {"type": "watch-setting-updated", "pkgid": C1, "data/xml_data": self.result_xml(C1)})
        self.wait_for_log("Waiting for app control socket initial time")
        self.turn(-40 * YEAR)
        self.wait_for_log("Waiting for app control socket initial time", 3)
        self.turn(40 * YEAR)
        self.wait_for_log("MAXIUM_DELAY_TIME is over")
        self.assertGreaterEqual(time.monotonic() - begin, 5 * 0.2)
        self.assertEqual(self.log().count("Waiting for app control socket initial time"), 5)

    def forget_how_to_start(self, app):
        folder = os.path.dirname(self.environment["DBUS_SESSION_BUS_ADDRESS"].removeprefix("unix:path="))
        os.unlink("%s/services/%s.service" % (folder, app))
        bus = DBusAddress("/org/freedesktop/DBus", bus_name="org.freedesktop.DBus",
                          interface="org.freedesktop.DBus")
        stranger = self.stranger()
        stranger.call(new_method_call(bus, "ReloadConfig"))
        wait_for(lambda: app not in stranger.call(message_bus.ListActivatableNames())[0])


class ATimer(TurnedWatchTest):
    MONOTONIC = 1  # does not follow the wall clock, and stands still while the machine is suspended

    def test_counts_the_time_that_the_machine_is_awake(self):
        self.wfctl("preview", "request", C1)
        for app in (SERVICE[0], CAPTURE[0]):
            clocks = {clock for clock, _ in timers(self.pid_of(app))}
            self.assertEqual(clocks, {self.MONOTONIC}, app)


class AWatchUpForLong(WatchTest):
    """Its machine started 144 years ago and slept through eight of them: seconds beyond 32 bits."""

    under = ("unshare", "--time", "--monotonic", "4310000000", "--boottime", "4560000000", "--")

    @classmethod
    def setUpClass(cls):
        done = subprocess.run([*cls.under, "true"], capture_output=True, text=True)
        if done.returncode != 0:
            raise unittest.SkipTest("no clocks of its own here: " + done.stderr)

    def test_draws_and_gives_captures_up(self):
        self.wfctl("preview", "request", C1)
        wait_for(lambda: DONE in self.log() or EXPIRED in self.log())
        self.kill(CAPTURE[0])
        self.peer(CAPTURE)
        given_up = self.log().count(EXPIRED)
        begin = time.monotonic()
        self.send(self.peer(HOME), {"type": "watch-setting-updated", "pkgid": C1, "data/label": "Mirel",
                                    "data/xml_data": self.result_xml(C1)})
        self.wait_for_log(EXPIRED, given_up + 1)
        self.assertGreaterEqual(time.monotonic() - begin, 0.5)

    def test_tells_what_came_after_its_service_began(self):
        self.wfctl("preview", "request", C1)
        (self.rw(C1) / "notes.txt").write_text("x")
        self.assertIn("changed after the service began", self.wfctl("doctor", "--fix", status=1))
        self.wfctl("down", "--root", self.root)
        self.up()
        self.wfctl("doctor", "--fix")
        self.assertFalse((self.rw(C1) / "notes.txt").exists())

    def test_traces_with_times_that_are_exact(self):
        self.wfctl("trace", "on")
        self.wfctl("date", "y")
        self.wfctl("trace", "off", "-o", self.root / "trace.json")
        times = [event["ts"] for event in json.loads((self.root / "trace.json").read_text()) if "ts" in event]
        self.assertGreater(len(times), 1)
        self.assertGreater(min(times), 4.31e15)
        self.assertLess(max(times) - min(times), 60e6)


class ATimeZone(TurnedWatchTest):
    """The watch's own, while nobody has set one."""

    def ask(self, instant="1791965370123"):
        return self.wfctl("date", "--pattern", "yyyy-MM-dd HH:mm", "--at", instant).strip()

    def test_holds_for_dates_from_the_next_request_on(self):
        self.assertEqual(self.ask(), "2026-10-14 08:09")
        self.move_to("Asia/Seoul")
        self.assertEqual(self.ask(), "2026-10-14 17:09")
        self.move_to("America/New_York")
        self.assertEqual(self.ask(), "2026-10-14 04:09")

    def test_holds_for_drawings_from_the_next_capture_on(self):
        pictures = []
        for zone in ("UTC", "Asia/Seoul", "America/New_York"):
            self.move_to(zone)
            self.wfctl("preview", "request", U9)
            pictures.append(self.preview(U9).read_bytes())
            self.assertEqual(pictures[-1], self.drawing(U9, "en_GB", 24), zone)
        self.assertEqual(len(set(pictures)), len(pictures))
        self.assertEqual(self.starts_of(CAPTURE[0]), 1)  # one process drew them all

    def test_that_is_set_wins_over_the_machines(self):
        self.wfctl("setting", "set", "timezone=Europe/Berlin")
        self.move_to("Asia/Seoul")
        self.assertEqual(self.ask(), "2026-10-14 10:09")

    def test_has_its_summer_time_by_the_instant_and_not_by_the_clock(self):
        self.move_to("Europe/Berlin")
        for seconds in (0, 40 * YEAR, -30 * YEAR):
            self.turn(seconds)
            self.assertEqual(self.ask("1774745999000"), "2026-03-29 01:59")
            self.assertEqual(self.ask("1774746000000"), "2026-03-29 03:00")


class ARecordedTime(TurnedWatchTest):
    def setUp(self):
        super().setUp()
        self.wfctl("set", C1)

    def year_of(self, seconds):
        return (datetime.datetime.now(datetime.timezone.utc) + datetime.timedelta(seconds=seconds)).year

    def query(self):
        return [record["time"] for record in json.loads(self.wfctl("survey", "query", "--json"))]

    def test_is_the_clocks_before_and_after_2038(self):
        for seconds in (-40 * YEAR, 0, 12 * YEAR, 80 * YEAR):
            self.turn(seconds)
            for text in self.query():
                self.assertIn(int(text[:4]), (self.year_of(seconds), self.year_of(seconds + HOUR)))
        last = self.query()[-1]
        self.assertTrue(self.wfctl("survey", "list").splitlines()[-1].startswith(last + "  " + SERVICE[0]))

    def test_that_is_earlier_than_those_before_it_takes_none_of_them_away(self):
        before = self.query()
        self.turn(-40 * YEAR)
        after = self.query()
        listed = [record["time"] for record in json.loads(self.wfctl("survey", "list", "--json"))]
        self.assertEqual(listed, before + after)

    def test_names_what_the_doctor_moves_away_after_2038(self):
        self.wfctl("preview", "request", C1)
        (self.rw(C1) / "notes.txt").write_text("x")
        self.turn(73 * YEAR)
        # To this clock the service began long after the file.
        report = json.loads(self.wfctl("doctor", "--fix", "--json"))
        self.assertRegex(report["time"], r"^%d\d{4}T\d{6}Z$" % self.year_of(73 * YEAR))
        self.assertFalse((self.rw(C1) / "notes.txt").exists())
        self.wfctl("doctor", "--undo", report["time"])
        self.assertTrue((self.rw(C1) / "notes.txt").exists())

    def test_of_a_file_that_is_ahead_of_the_clock_does_not_keep_it_from_the_doctor(self):
        self.wfctl("preview", "request", C1)
        (self.rw(C1) / "notes.txt").write_text("x")
        self.assertIn("changed after the service began", self.wfctl("doctor", "--fix", status=1))
        self.turn(-YEAR)
        report = json.loads(self.wfctl("doctor", "--fix", "--json"))
        self.assertRegex(report["time"], r"^%d\d{4}T\d{6}Z$" % self.year_of(-YEAR))
        self.assertFalse((self.rw(C1) / "notes.txt").exists())


if __name__ == "__main__":
    unittest.main()
