"""Programs that die at any moment: the next message is answered, and no file is half-written."""

import os
import random
import signal
import subprocess
import threading
import time
import unittest

from watch import C1, CAPTURE, MANAGER, PREFIX, SERVICE, Refused, WatchTest, wait_for


class AKilledService(WatchTest):
    def update(self, peer):
        self.send(peer, {"type": "watch-setting-updated", "pkgid": C1, "data/label": "Mirel",
                         "data/xml_data": self.result_xml(C1)})

    def test_is_started_by_the_next_message(self):
        manager = self.peer(MANAGER)
        self.kill(SERVICE[0])
        self.update(manager)
        self.assertEqual(manager.wait()[0].bundle["status"], "success")

    def test_answers_the_next_message_whenever_it_was_killed(self):
        manager = self.peer(MANAGER)
        moments = random.Random(20)  # the same moments every time
        for _ in range(20):
            pid = wait_for(lambda: self.pid_of(SERVICE[0]) or self._start(manager))
            delay = moments.uniform(0, 0.02)
            killer = threading.Timer(delay, os.kill, (pid, signal.SIGKILL))
            killer.start()
            try:
                self.update(manager)
            except (Refused, OSError):
                pass  # it died with the message
            killer.join()
            wait_for(lambda: self.pid_of(SERVICE[0]) != pid)
            manager.received.clear()
            self.update(manager)
            self.assertEqual(manager.wait()[-1].bundle["status"], "success")
            result = self.rw(C1, C1 + "_result.xml").read_text()
            self.assertEqual(result, self.result_xml(C1))
            self.assertTrue(self.rw(C1, "watchface.xml").read_text().rstrip().endswith("</watchface>"))

    def _start(self, peer):
        self.send(peer, {"type": "watch-req-watchlists"})
        return self.pid_of(SERVICE[0])

    def test_lets_the_bus_go_and_come_back(self):
        manager = self.peer(MANAGER)
        daemon = self._bus_daemon()
        old = self.pid_of(SERVICE[0])
        os.kill(daemon, signal.SIGKILL)
        wait_for(lambda: not os.path.exists("/proc/%d" % old))  # it ends when its bus goes

        def again():
            try:
                return self.pid_of(SERVICE[0])
            except (OSError, EOFError):
                return None
        self.assertNotEqual(wait_for(again), old)
        manager = self.peer(MANAGER)
        self.update(manager)
        self.assertEqual(manager.wait()[0].bundle["status"], "success")

    def _bus_daemon(self):
        return self.pid_of("org.freedesktop.DBus")


class AKilledCapture(WatchTest):
    def test_is_launched_again_for_the_next_preview(self):
        manager = self.peer(MANAGER)
        update = {"type": "watch-setting-updated", "pkgid": C1, "data/label": "Mirel",
                  "data/xml_data": self.result_xml(C1)}
        self.send(manager, update)
        wait_for(self.preview(C1).exists)
        if self.pid_of(CAPTURE[0]):
            self.kill(CAPTURE[0])
        self.preview(C1).unlink()
        self.send(manager, update)
        wait_for(self.preview(C1).exists)


class ASecondInstance(WatchTest):
    def test_refuses_to_start_and_says_why(self):
        for program in (SERVICE[0], CAPTURE[0]):
            with self.subTest(program):
                name = program.rsplit(".", 1)[1]
                holder = self.pid_of(program) or self.peer((program, None))
                done = subprocess.run([PREFIX / "libexec/watch" / name], env=self.environment, timeout=20,
                                      capture_output=True, text=True)
                self.assertNotEqual(done.returncode, 0)
                self.assertIn("another %s is running" % program, done.stderr)
                self.assertTrue(holder)


class AProgramWithoutABus(unittest.TestCase):
    def test_ends_with_one_clear_line(self):
        environment = dict(os.environ, DBUS_SESSION_BUS_ADDRESS="unix:path=/nonexistent/bus", WATCH_ROOT="/tmp")
        begin = time.monotonic()
        done = subprocess.run([PREFIX / "libexec/watch/watchface-service"], env=environment, timeout=20,
                              capture_output=True, text=True)
        self.assertEqual(done.returncode, 69)
        self.assertIn("no bus at unix:path=/nonexistent/bus", done.stderr)
        self.assertLess(time.monotonic() - begin, 10)


if __name__ == "__main__":
    unittest.main()
