"""What the service does when settings and setup keys change."""

import unittest

from watch import C1, E1, WatchTest

FIRST_BOOT = "db/setup_wizard/first_boot"
STANDALONE = "db/setup_wizard/standalone"
EULA = "db/wms/gm_setupwizard_eula_finished"
VENDOR = "db/wms/host_status/vendor"
CURRENT = "file/private/com.corvane.watchface/watchface_name"
CHECKED = " > check limited complication!!\n"


class ASetting(WatchTest):
    def assert_drawn(self, language, hours, passes=1):
        """Every face of the product once a pass."""
        names = self.shipped()
        self.wait_for_captures(passes * len(names))
        for name in names:
            with self.subTest(name):
                self.assertEqual(self.preview(name).read_bytes(), self.drawing(name, language, hours))
        self.assert_captured(passes * names)

    def test_of_the_language_has_every_face_drawn_again_once(self):
        self.wfctl("setting", "set", "language=ko_KR")
        self.assert_drawn("ko_KR", 24)
        # This one writes a date.
        self.assertNotEqual(self.preview(E1).read_bytes(), self.ro(E1, E1 + ".png").read_bytes())
        self.assertIn(" > SYSTEM_SETTINGS_KEY_LOCALE_LANGUAGE changed [en_GB] -> [ko_KR]\n", self.log())

    def test_of_the_hour_mode_has_every_face_drawn_again_once(self):
        self.wfctl("setting", "set", "24-hour=false")
        self.assert_drawn("en_GB", 12)
        self.assertIn(" > SYSTEM_SETTINGS_KEY_LOCALE_TIMEFORMAT_24HOUR changed [1] -> [0]\n", self.log())

    def test_of_the_country_has_every_face_drawn_again_once(self):
        self.wfctl("setting", "set", "country=ko_KR")
        self.assert_drawn("en_GB", 24)
        self.assertIn(" > SYSTEM_SETTINGS_KEY_LOCALE_COUNTRY changed [en_GB] -> [ko_KR]\n", self.log())

    def test_to_what_it_is_draws_nothing(self):
        self.wfctl("setting", "set", "language=en_GB", "country=en_GB", "24-hour=true")
        # The bus brings this change behind those.
        self.wfctl("setting", "set", "language=ko_KR")
        self.assert_drawn("ko_KR", 24)

    def test_is_remembered_and_can_be_set_back(self):
        self.wfctl("setting", "set", "language=ko_KR")
        self.wait_for_captures(len(self.shipped()))
        self.wfctl("setting", "set", "language=en_GB")
        self.assert_drawn("en_GB", 24, passes=2)


class PhoneFaces(WatchTest):
    """Faces show what needs a phone when the service starts: two as the user chose, others as they are shipped."""

    is_set_up = "true"
    places = {C1: "date=weather", E1: "side-left=notification"}

    def setUp(self):
        super().setUp()
        for face, place in self.places.items():
            self.wfctl("edit", face, "--place", place)
        self.wfctl("set", E1)
        self.wfctl("key", "set", FIRST_BOOT, self.is_set_up)
        self.restart_service()
        # The face that is shown comes first.
        self.faces = [E1] + [face for face in self.shipped() if face != E1 and self.sources(face)]
        self.previews = {face: self.current(face, face + ".png").read_bytes() for face in self.faces}
        self.result_xmls = {face: self.current(face, face + "_result.xml").read_bytes() for face in self.faces}
        self.drawn = len(self.captured())

    def current(self, face, file):
        return next(path for path in (self.rw(face, file), self.ro(face, file)) if path.exists())

    def sources(self, face):
        text = self.current(face, "watchface.xml").read_text()
        return [word for word in ("weather", "calendar", "notification") if 'source="%s"' % word in text]

    def assert_cleaned(self):
        self.wait_for_captures(self.drawn + len(self.faces))
        self.assertEqual(self.captured()[self.drawn:], self.faces)
        for face in self.faces:
            with self.subTest(face):
                self.assertEqual(self.sources(face), [])
                self.assertNotEqual(self.preview(face).read_bytes(), self.previews[face])
                self.assertEqual(self.preview(face).read_bytes(), self.drawing(face, "en_GB", 24))
                self.assertEqual(self.rw(face, face + "_result.xml").read_bytes(), self.result_xmls[face])
        self.assertEqual(sorted(folder.name for folder in self.rw("").iterdir()), sorted(self.faces))

    def assert_untouched(self):
        """A change of settings comes behind; it has every face drawn, and cleans none."""
        self.wfctl("setting", "set", "country=ko_KR")
        self.wait_for_captures(self.drawn + len(self.shipped()))
        self.assertNotIn(CHECKED, self.log())
        for face in self.faces:
            with self.subTest(face):
                self.assertNotEqual(self.sources(face), [])
                self.assertEqual(self.preview(face).read_bytes(), self.previews[face])


class ASetupKey(PhoneFaces):
    def test_of_a_standalone_watch_takes_what_needs_a_phone_off_the_faces(self):
        for face in self.places:
            self.assertIn(face, self.faces)
        self.wfctl("key", "set", STANDALONE, "1")
        self.assert_cleaned()
        self.assertEqual(self.wfctl("key", "get", CURRENT), E1 + "\n")

    def test_of_an_agreement_with_a_limiting_phone_does_so_too(self):
        self.wfctl("key", "set", VENDOR, "LO")
        self.wfctl("key", "set", EULA, "true")
        self.assert_cleaned()

    def test_of_an_agreement_with_another_phone_leaves_the_faces_alone(self):
        self.wfctl("key", "set", VENDOR, "other")
        self.wfctl("key", "set", EULA, "true")
        self.assert_untouched()
        self.assertIn(" > key[%s]\n" % EULA, self.log())

    def test_of_a_paired_watch_leaves_the_faces_alone(self):
        self.wfctl("key", "set", STANDALONE, "0")
        self.assert_untouched()
        self.assertIn(" > key[%s]\n" % STANDALONE, self.log())


class ASetupKeyBeforeTheSetupWizardIsDone(PhoneFaces):
    is_set_up = "false"

    def test_is_not_looked_at(self):
        self.wfctl("key", "set", VENDOR, "LO")
        self.wfctl("key", "set", STANDALONE, "1")
        self.wfctl("key", "set", EULA, "true")
        self.assert_untouched()
        self.assertNotIn(" > key[", self.log())


if __name__ == "__main__":
    unittest.main()
