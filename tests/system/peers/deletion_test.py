"""Faces deleted by peers, with real processes: what goes, what stays, who is told."""

import os
import random
import signal
import threading
import unittest

from watch import C1, E1, EDITOR, FACES, HOME, MANAGER, SERVICE, SETTINGS, U1, Refused, WatchTest, wait_for


class ADeletion(WatchTest):
    def setUp(self):
        super().setUp()
        self.manager, self.editor = self.peer(MANAGER), self.peer(EDITOR)
        self.settings, self.home = self.peer(SETTINGS), self.peer(HOME)
        self.peers = [self.manager, self.editor, self.settings, self.home]

    def install(self, *names):
        """Faces in the read/write area, drawn; nobody has anything left to hear of it."""
        for name in names:
            self.send(self.manager, {"type": "watch-setting-created", "pkgid": name, "data/label": "Mirel",
                                     "data/xml_data": self.result_xml(name)})
            wait_for(self.preview(name).exists)
        self.manager.wait(len(names))
        self.manager.received.clear()

    def delete(self, peer, name):
        self.send(peer, {"type": "watch-setting-deleted", "pkgid": name})

    def assert_told(self, *told):
        """Each of these peers got exactly these messages, and the others nothing."""
        for peer in self.peers:
            self.assert_received(peer, *(bundle for to, bundle in told if to is peer))
        self.assert_nothing_more(*self.peers)
        for peer in self.peers:
            peer.received.clear()

    def notice(self, name, **more):
        return {"type": "watch-setting-deleted", "pkgid": name, **more}

    def test_by_the_manager_is_told_to_editor_settings_and_home(self):
        self.install(C1, E1)
        self.delete(self.manager, C1)
        self.assert_told((self.manager, self.notice(C1, status="success")), (self.editor, self.notice(C1)),
                         (self.settings, self.notice(C1)), (self.home, self.notice(C1)))
        self.assertFalse(self.rw(C1).exists())
        self.assertTrue(self.rw(E1).exists())
        self.assertTrue(self.ro(C1, C1 + "_result.xml").exists())
        self.assertIn(C1, self.wfctl("list"))  # as it was shipped

    def test_by_the_manager_is_told_to_those_who_are_there(self):
        self.install(C1)
        self.editor.close()
        self.home.close()
        self.peers = [self.manager, self.settings]
        self.delete(self.manager, C1)
        self.assert_told((self.manager, self.notice(C1, status="success")), (self.settings, self.notice(C1)))

    def test_by_a_local_editor_is_told_to_the_manager_alone(self):
        for peer in (self.editor, self.settings, self.home):
            with self.subTest(peer.app):
                self.install(C1)
                self.delete(peer, C1)
                self.assert_told((peer, self.notice(C1, status="success")), (self.manager, self.notice(C1)))
                self.assertFalse(self.rw(C1).exists())

    def test_of_what_is_only_shipped_fails_and_is_told_to_the_editors_whoever_asked(self):
        before = self.tree()
        for peer in (self.editor, self.manager):
            with self.subTest(peer.app):
                self.delete(peer, C1)
                fan_out = [(to, self.notice(C1)) for to in (self.editor, self.settings, self.home)]
                self.assert_told((peer, self.notice(C1, status="fail")), *fan_out)
        self.assertEqual(self.tree(), before)

    def test_that_leads_anywhere_else_fails_and_removes_nothing(self):
        self.install(C1)
        before = self.tree()
        for name in ("", "/", ".", "..", "../../trusted", C1 + "/..", "//" + C1):
            with self.subTest(name):
                self.delete(self.manager, name)
                self.assertEqual(self.manager.wait(1)[0].bundle, self.notice(name, status="fail"))
                self.manager.received.clear()
                self.assertEqual(self.tree(), before)

    def test_of_the_album_takes_the_pictures_of_its_gallery_with_it(self):
        self.install(U1)
        trusted = self.root / "apps" / FACES / "shared/trusted/theme"
        picture = self.root / "picture.png"
        picture.write_bytes(b"picture")
        for bg_type in ("watch-bg-gallery-u1", "watch-bg-gallery", "watch-bg-digital"):
            self.send(self.manager, {"type": "watch-bg-add", "bg_type": bg_type, "bg_list": str(picture)})
        self.manager.wait(3)
        self.manager.received.clear()
        self.delete(self.editor, U1)
        self.assert_told((self.editor, self.notice(U1, status="success")), (self.manager, self.notice(U1)))
        self.assertEqual(sorted(str(p.relative_to(trusted)) for p in trusted.rglob("*") if p.is_file()),
                         ["Backgrounds/picture.png", "GalleryBackgrounds/picture.png"])

    def test_while_the_preview_is_being_drawn_is_final(self):
        finished = "messageType = [watch-capture-finished], watch_name = [%s]" % C1
        for row in range(1, 6):
            self.send(self.manager, {"type": "watch-setting-updated", "pkgid": C1, "data/label": "Mirel",
                                     "data/xml_data": self.result_xml(C1)})
            self.delete(self.manager, C1)
            self.wait_for_log(finished, row)
            self.assertFalse(self.rw(C1).exists())

    def test_that_was_interrupted_is_finished_by_the_next(self):
        moments = random.Random(7)  # the same moments every time
        self.install(C1)
        kept = self.rw(C1, C1 + ".png").read_bytes()
        for _ in range(12):
            for number in range(300):
                path = self.rw(E1) / ("deep/%d" % (number % 10)) / str(number)
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_bytes(b"x")
            self.rw(E1, E1 + "_result.xml").write_text(self.result_xml(E1))
            self.send(self.manager, {"type": "watch-req-watchlists"})
            pid = self.pid_of(SERVICE[0])
            killer = threading.Timer(moments.uniform(0, 0.01), os.kill, (pid, signal.SIGKILL))
            killer.start()
            try:
                self.delete(self.manager, E1)
            except (Refused, OSError):
                pass  # it died with the message
            killer.join()
            wait_for(lambda: self.pid_of(SERVICE[0]) != pid)
            self.delete(self.manager, E1)
            self.assertFalse(self.rw(E1).exists())
            self.assertEqual(self.rw(C1, C1 + ".png").read_bytes(), kept)


if __name__ == "__main__":
    unittest.main()
