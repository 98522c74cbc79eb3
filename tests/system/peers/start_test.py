"""What the service does at its starts: previews in the watch's own language at the first, nothing afterwards."""

import shutil
import unittest

from watch import C1, CAPTURE, SERVICE, WatchTest

DONE = "wfs/pref/initial_preview_update_done"
DRAWN = "update preview done!!"


class AStart(WatchTest):
    def is_initial_capture_done(self):
        return DONE + "=true" in self.wfctl("pref", "list", SERVICE[0]).splitlines()


class AFirstStartInAnotherLanguage(AStart):
    language = "ko_KR.UTF-8"

    def test_draws_every_face_of_the_product_once_in_that_language(self):
        names = self.shipped()
        self.wait_for_log(DRAWN)
        self.assertIn("set preview update!! initial language[ko_KR] country[ko_KR] 24 hour mode[0]", self.log())
        self.assertTrue(self.is_initial_capture_done())
        for name in names:
            with self.subTest(name):
                preview = self.preview(name).read_bytes()
                self.assertEqual(preview, self.drawing(name, "ko_KR", 12))
                self.assertNotEqual(preview, self.ro(name, name + ".png").read_bytes())
        self.assert_captured(names)

    def test_draws_them_in_one_pass_and_one_run_of_the_capture_application(self):
        self.wait_for_log(DRAWN)
        self.assertEqual(sorted(self.captured()), self.shipped())
        self.assertEqual(self.log().count(DRAWN), 1)
        self.assertEqual(self.starts_of(CAPTURE[0]), 1)

    def test_is_followed_by_others_that_draw_nothing(self):
        names = self.shipped()
        self.wait_for_captures(len(names))
        self.wfctl("down", "--root", self.root)
        self.up()
        self.restart_service()
        self.assert_captured(names)


class AFirstStartInTheLanguageOfTheShippedPreviews(AStart):
    def test_draws_and_copies_nothing(self):
        self.assertTrue(self.is_initial_capture_done())
        self.assertIn("initial preview matched!! set initial preview update done flag", self.log())
        self.assertFalse(self.rw("").exists())
        self.assert_captured([])

    def test_is_all_the_same_in_the_pictures(self):
        """What ships is what the watch would draw."""
        for name in self.shipped():
            self.wfctl("preview", "request", name)
            with self.subTest(name):
                self.assertEqual(self.preview(name).read_bytes(), self.ro(name, name + ".png").read_bytes())

    def test_draws_every_face_where_there_are_faces_from_before(self):
        self.wfctl("down", "--root", self.root)
        shutil.rmtree(self.root / "apps" / SERVICE[0])
        shutil.copytree(self.ro(C1), self.rw(C1))
        self.up()
        self.wait_for_captures(len(self.shipped()))
        self.assertIn("watchfaces found in RW area!! set preview update!!", self.log())
        self.assert_captured(self.shipped())


if __name__ == "__main__":
    unittest.main()
