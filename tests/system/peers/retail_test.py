"""The reset of a demo unit by a launch request, which is answered when the previews are there."""

import subprocess
import time
import unittest

from watch import C1, CAPTURE, PREFIX, SERVICE, WatchTest, wait_for

SUCCEEDED = '{"result": 0, "extra": {"Result": "OK"}}\n'
FAILED = '{"result": -1, "extra": {}}\n'
REPLIED = " > retailmode send reply!!\n"
DONE = " > update preview done!!\n"
EXPIRED = " > update preview fallback timer expired!!\n"


class ARetailReset(WatchTest):
    def setUp(self):
        super().setUp()
        self.wfctl("key", "set", "db/retailmode/enabled", "1")

    def launch(self):
        """A reset that is asked for beside the test."""
        process = subprocess.Popen([PREFIX / "bin/wfctl", "launch", SERVICE[0], "retail-mode=init_watch"],
                                   env=self.environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                   stderr=subprocess.DEVNULL, text=True)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def output(self, process):
        return process.communicate(timeout=60)[0]


class ARetailResetOfTheInstalledWatch(ARetailReset):
    def test_is_answered_when_every_preview_is_drawn(self):
        self.assertEqual(self.wfctl("launch", SERVICE[0], "retail-mode=init_watch"), SUCCEEDED)
        log = self.log()
        ends = [log.index(end) for end in (DONE, EXPIRED) if end in log]
        self.assertGreater(log.index(REPLIED), min(ends))
        if EXPIRED not in log:
            self.assertEqual(sorted(self.captured()), self.shipped())
            for name in self.shipped():
                self.assertEqual(self.preview(name).read_bytes(), self.drawing(name, "en_GB", 24))

    def test_brings_back_what_was_shipped(self):
        self.wfctl("edit", C1, "--pick", "dial=roman")
        edited = self.rw(C1, "watchface.xml").read_bytes()
        self.rw("com.example.added").mkdir()
        self.assertEqual(self.wfctl("launch", SERVICE[0], "retail-mode=init_watch"), SUCCEEDED)
        self.assertNotEqual(self.rw(C1, "watchface.xml").read_bytes(), edited)
        self.assertEqual(self.rw(C1, "watchface.xml").read_bytes(), self.ro(C1, "watchface.xml").read_bytes())
        self.assertFalse(self.rw("com.example.added").exists())
        self.assertEqual(self.wfctl("key", "get", "file/private/com.corvane.watchface/watchface_name"), C1 + "\n")

    def test_is_refused_outside_the_retail_mode_and_changes_nothing(self):
        self.wfctl("edit", C1, "--pick", "dial=roman")
        self.wfctl("key", "set", "db/retailmode/enabled", "0")
        before = self.tree()
        self.assertEqual(self.wfctl("launch", SERVICE[0], "retail-mode=init_watch", status=1), FAILED)
        self.assertEqual(self.tree(), before)
        self.assertIn(" > retail-mode[init_watch][0]\n", self.log())


class ARetailResetWithAScriptedCapture(ARetailReset):
    """The test takes the capture application's name and port, and draws nothing."""

    def setUp(self):
        super().setUp()
        self.capture = self.peer(CAPTURE)
        self.names = self.shipped()

    def await_requests(self):
        wait_for(lambda: len(self.capture.wait(len(self.names))) >= len(self.names))
        self.assertEqual([message.bundle["pkgName"] for message in self.capture.received], self.names)

    def finish(self, *names):
        for name in names:
            self.send(self.capture, {"type": "watch-capture-finished", "pkgid": name})

    def test_is_answered_with_the_last_capture_and_not_before(self):
        reset = self.launch()
        self.await_requests()
        self.finish(*self.names[:-1])
        self.assert_nothing_more()
        log = self.log()
        self.assertTrue(REPLIED not in log or EXPIRED in log)
        self.finish(self.names[-1])
        self.assertEqual(self.output(reset), SUCCEEDED)

    def test_is_answered_when_the_captures_are_given_up(self):
        begin = time.monotonic()
        reset = self.launch()
        self.await_requests()
        self.finish(*self.names[1:])
        self.assertEqual(self.output(reset), SUCCEEDED)
        # Half a second for each request, from the last one on.
        self.assertGreaterEqual(time.monotonic() - begin, len(self.names) / 2)
        log = self.log()
        self.assertGreater(log.index(REPLIED), log.index(EXPIRED))
        self.assertNotIn(DONE, log)

    def test_is_answered_as_failed_when_the_service_ends(self):
        reset = self.launch()
        self.await_requests()
        self.kill(SERVICE[0], 15)
        self.assertEqual(self.output(reset), FAILED)
        self.assertEqual(reset.returncode, 1)

    def test_takes_the_place_of_another_that_waits(self):
        first = self.launch()
        self.await_requests()
        self.capture.received.clear()
        second = self.launch()
        self.await_requests()
        self.finish(*self.names)
        self.assertEqual(self.output(second), SUCCEEDED)
        self.assert_nothing_more()
        self.assertIsNone(first.poll())
        self.assertEqual(self.log().count(REPLIED), 1)


class AnotherLaunchRequest(WatchTest):
    def launch(self, *data):
        """Done without an answer, which reads as failed."""
        self.assertEqual(self.wfctl("launch", SERVICE[0], *data, status=1), FAILED)

    def test_for_the_configuration_is_done(self):
        self.launch("operation=configuration")
        self.assertIn(" > operation[configuration]\n", self.log())
        self.assertIn(" > received watchface configuration operation!!\n", self.log())

    def test_of_another_operation_is_only_noted(self):
        before = self.tree()
        self.launch("operation=other", "wfs/req/type=other", "more=[a,b]")
        self.assertIn(" > operation[other]\n", self.log())
        self.assertEqual(self.tree(), before)

    def test_starts_the_service_where_it_does_not_run(self):
        self.kill(SERVICE[0])
        self.launch("operation=configuration")
        self.assertIn(" > operation[configuration]\n", self.log())


if __name__ == "__main__":
    unittest.main()
