"""Dates that the phone asks for, written by the installed service in the watch's language and time zone."""

import unittest

from watch import EDITOR, MANAGER, SETTINGS, WatchTest

NARROW_SPACE = "\u202f"


class ADate(WatchTest):
    def ask(self, peer, skeleton="yMMMMEEEEdjmm", **more):
        self.send(peer, {"type": "watch-icu-convert", "data/timestamp": "1791965370123", "data/skeleton": skeleton,
                         "data/bestpattern": "true", **more})

    def answer(self, text):
        return {"type": "watch-icu-convert", "formattedstring": text}

    def test_is_written_as_the_watch_is_set_at_that_moment(self):
        manager = self.peer(MANAGER)
        self.wfctl("setting", "set", "language=en_US", "timezone=America/New_York")
        self.ask(manager)
        self.wfctl("setting", "set", "language=ko_KR",
                   "timezone=/usr/share/zoneinfo/Asia/Seoul")
        self.ask(manager)
        self.assert_received(manager,
                             self.answer("Wednesday, October 14, 2026 at 4:09%sAM" % NARROW_SPACE),
                             self.answer("2026년 10월 14일 수요일 오후 5:09"))

    def test_goes_to_the_manager_whoever_asks(self):
        manager, editor = self.peer(MANAGER), self.peer(EDITOR)
        self.ask(editor, "yyyy-MM-dd", **{"data/bestpattern": "TRUE"})
        self.assert_received(manager, self.answer("2026-10-14"))
        self.assert_nothing_more(manager, editor)
        self.assertEqual(editor.received, [])

    def test_that_cannot_be_written_is_not_answered_and_the_next_one_is(self):
        manager, settings = self.peer(MANAGER), self.peer(SETTINGS)
        for skeleton in ("", b"\xff", "y" * 1025, "y n"):
            self.ask(settings, skeleton, **{"data/bestpattern": "false"})
        self.ask(settings, "y")
        self.assert_received(manager, self.answer("2026"))
        self.assert_nothing_more(manager, settings)


if __name__ == "__main__":
    unittest.main()
