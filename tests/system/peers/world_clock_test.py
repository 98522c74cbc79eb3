"""World clocks on the installed service: what is stored, and a change announced and delivered."""

import unittest

from watch import C1, C4, EDITOR, HOME, SERVICE, WatchTest, wait_for

UPDATE = {"type": "watch-setting-update-world-clock", "data/worldclock/complication_name": "city",
          "data/worldclock/cityname": "Lima", "data/worldclock/country": "Peru",
          "data/worldclock/timezone": "PET", "data/worldclock/timezone_path": "/usr/share/zoneinfo/America/Lima"}


class AWorldClock(WatchTest):
    def announce_for(self, name):
        self.wfctl("set", name)
        self.send(self.peer(("com.corvane.worldclock-map", None)), {"type": "watch-prepare-update-world-clock"})
        self.wait_for_log("prepare worldclock update for [%s]" % name)

    def test_that_is_stored_is_told(self):
        editor = self.peer(EDITOR)
        stored = {"timezonePath": "Asia/Seoul", "timezone": "KST", "city": "Seoul", "country": "Korea"}
        for field, value in stored.items():
            self.wfctl("pref", "set", SERVICE[0], "%s-city-%s" % (C4, field), value)
        request = {"type": "watch-dual-clock-data", "pkgid": C4, "group/name": "city"}
        self.send(editor, request)
        self.wfctl("pref", "set", SERVICE[0], "%s-city-updatedMode" % C4, "1")
        self.send(editor, request)
        self.assert_received(editor, {**request, **stored, "status": "fail"},
                             {**request, **stored, "updatedMode": "1", "status": "success"})

    def test_is_written_into_the_watch_face_that_was_announced_and_drawn(self):
        home = self.peer(HOME)
        self.announce_for(C4)
        self.wfctl("set", C1)
        self.send(home, UPDATE)
        self.assert_received(home, {**UPDATE, "status": "success"})
        wait_for(lambda: self.preview(C4).exists())
        flat = self.rw(C4, "watchface.xml").read_text()
        self.assertIn('city="Lima"', flat)
        self.assertIn("America/Lima", flat)
        self.assertFalse(self.rw(C1).exists())

    def test_is_refused_for_a_slot_that_offers_none_and_nothing_is_drawn(self):
        home = self.peer(HOME)
        self.announce_for(C4)
        wrong = {**UPDATE, "data/worldclock/complication_name": "nowhere"}
        self.send(home, wrong)
        self.assert_received(home, {**wrong, "status": "fail"})
        self.assertEqual(self.rw(C4, "watchface.xml").read_bytes(), self.ro(C4, "watchface.xml").read_bytes())
        self.assertNotIn("mCaptureProcessingWatchfaces", self.log())

    def test_that_nobody_announced_is_not_answered(self):
        home = self.peer(HOME)
        before = self.tree()
        self.send(home, UPDATE)
        self.wait_for_log("failed to copy watchface from ro to rw!! update wordlock data failed!!")
        self.assert_nothing_more(home)
        self.assertEqual(home.received, [])
        self.assertEqual(self.tree(), before)


if __name__ == "__main__":
    unittest.main()
