"""Background pictures added, deleted, held, saved and cancelled by peers, with real processes."""

import unittest

from watch import EDITOR, FACES, HOME, MANAGER, SERVICE, WatchTest

U1 = "watch-bg-gallery-u1"


class Backgrounds(WatchTest):
    def setUp(self):
        super().setUp()
        self.manager, self.editor = self.peer(MANAGER), self.peer(EDITOR)
        self.trusted = self.root / "apps" / FACES / "shared/trusted/theme"

    def picture(self, name, content=b"picture"):
        path = self.root / "pictures" / name
        path.parent.mkdir(exist_ok=True)
        path.write_bytes(content)
        return str(path)

    def files(self):
        return sorted(str(p.relative_to(self.trusted)) for p in self.trusted.rglob("*") if p.is_file())

    def ask(self, kind, bg_type=U1, peer=None, status="success", **more):
        """Sends the message and takes its answer."""
        peer = peer or self.editor
        bundle = {"type": kind, "bg_type": bg_type, **more}
        answers = len(peer.received) + 1  # one may come while it is being sent
        self.send(peer, bundle)
        answer = peer.wait(answers)[-1]
        self.assertEqual(answer.bundle, {**bundle, "status": status})
        return bundle

    def assert_told(self, *bundles):
        self.assert_received(self.manager, *bundles)
        self.manager.received.clear()
        self.assert_nothing_more(self.manager)


class ABackground(Backgrounds):
    def test_is_added_and_deleted_where_its_type_says(self):
        for bg_type, place in (("watch-bg-digital", "Backgrounds/sky.png"),
                               ("watch-bg-gallery", "GalleryBackgrounds/sky.png"),
                               (U1, "GalleryBackgrounds/U1/sky.png")):
            with self.subTest(bg_type):
                asked = self.ask("watch-bg-add", bg_type, bg_list=self.picture("sky.png"))
                self.assertEqual((self.trusted / place).read_bytes(), b"picture")
                self.assert_told({**asked, "bg_list": str(self.trusted / place)})
                asked = self.ask("watch-bg-del", bg_type, bg_list="/any/sky.png")
                self.assertEqual(self.files(), [])
                self.assert_told({**asked, "bg_list": "sky.png"})

    def test_of_the_manager_is_answered_to_it_alone(self):
        home = self.peer(HOME)
        self.ask("watch-bg-add", peer=self.manager, bg_list=self.picture("a"))
        self.assert_nothing_more(self.manager, self.editor, home)
        self.assertEqual(len(self.manager.received), 1)

    def test_that_is_missing_fails_and_nobody_is_told(self):
        before = self.tree()
        self.ask("watch-bg-add", status="fail", bg_list=str(self.root / "missing.png"))
        self.ask("watch-bg-add", status="fail", bg_list="")
        self.ask("watch-bg-del", status="fail")
        self.assert_told()
        self.assertEqual(self.tree(), before)

    def test_that_leads_out_of_its_folder_is_refused(self):
        self.ask("watch-bg-add", bg_list=self.picture("a"))
        self.manager.wait(1)
        before = self.tree()
        self.ask("watch-bg-add", "watch-bg-gallery-../../../../x", status="fail", bg_list=self.picture("b"))
        self.ask("watch-bg-del", "watch-bg-gallery-u1/../u1", bg_list="a")  # answered, and left alone
        self.ask("watch-bg-del", U1, bg_list=["..", ".", ""])
        self.assertEqual(self.tree(), before)

    def test_whose_name_is_no_utf8_is_not_lost(self):
        name = b"\xff\xfe.png"
        path = bytes(self.root) + b"/" + name
        with open(path, "wb") as file:
            file.write(b"picture")
        self.send(self.editor, {"type": "watch-bg-add", "bg_type": U1, "bg_list": path})
        self.assertEqual(self.editor.wait()[0].bundle["status"], "success")
        self.assertEqual(self.files(), ["GalleryBackgrounds/U1/" + name.decode(errors="surrogateescape")])


class AHeldChange(Backgrounds):
    def hold(self, kind, **more):
        return self.ask(kind, **{"watch-bg-pending": "true", **more})

    def test_lasts_when_it_is_saved(self):
        self.ask("watch-bg-add", bg_list=self.picture("old"))
        self.hold("watch-bg-add", bg_list=self.picture("new"))
        self.manager.wait(2)
        self.manager.received.clear()
        self.hold("watch-bg-del", bg_list=["old", "other"])
        self.assert_told()
        self.assertEqual(self.files(), ["GalleryBackgrounds/U1/new", "GalleryBackgrounds/U1/old"])
        self.ask("watch-bg-save")
        self.assert_told({"type": "watch-bg-del", "bg_type": "watch-bg-gallery", "bg_list": ["old", "other"]})
        self.assertEqual(self.files(), ["GalleryBackgrounds/U1/new"])
        self.ask("watch-bg-cancel")
        self.assert_told()
        self.assertEqual(self.files(), ["GalleryBackgrounds/U1/new"])

    def test_is_taken_back_when_it_is_cancelled(self):
        self.ask("watch-bg-add", bg_list=self.picture("old"))
        self.hold("watch-bg-add", bg_list=self.picture("new"))
        self.hold("watch-bg-del", bg_list="old")
        self.manager.wait(2)
        self.manager.received.clear()
        self.ask("watch-bg-cancel")
        self.assert_told({"type": "watch-bg-del", "bg_type": "watch-bg-gallery", "bg_list": ["new"]})
        self.assertEqual(self.files(), ["GalleryBackgrounds/U1/old"])

    def test_is_forgotten_when_the_service_ends_and_the_pictures_stay(self):
        self.ask("watch-bg-add", bg_list=self.picture("old"))
        self.hold("watch-bg-add", bg_list=self.picture("new"))
        self.hold("watch-bg-del", bg_list="old")
        self.manager.wait(2)
        self.manager.received.clear()
        self.kill(SERVICE[0])
        self.ask("watch-bg-cancel")
        self.ask("watch-bg-save")
        self.assert_told()
        self.assertEqual(self.files(), ["GalleryBackgrounds/U1/new", "GalleryBackgrounds/U1/old"])


if __name__ == "__main__":
    unittest.main()
