"""A face installed and updated by peers of another language and D-Bus library, with real processes."""

import unittest

from watch import C1, E1, EDITOR, HOME, MANAGER, SERVICE, SETTINGS, WatchTest, wait_for

PNG = b"\x89PNG\r\n\x1a\n"


class AnInstall(WatchTest):
    def bundle(self, kind="watch-setting-created", name=C1, **more):
        return {"type": kind, "pkgid": name, "data/label": "Mirel", "data/xml_data": self.result_xml(name), **more}

    def reply(self, kind="watch-setting-created", name=C1, status="success", **more):
        return {"type": kind, "pkgid": name, "data/label": "Mirel", "status": status,
                "data/icon_path": str(self.preview(name)), **more}

    def wait_for_preview(self, name=C1):
        wait_for(lambda: self.preview(name).exists() and self.preview(name).read_bytes().startswith(PNG))

    def test_from_the_manager_is_answered_to_the_manager_alone(self):
        manager, editor, home = self.peer(MANAGER), self.peer(EDITOR), self.peer(HOME)
        self.send(manager, self.bundle())
        self.assert_received(manager, self.reply())
        self.wait_for_preview()
        self.assert_nothing_more(manager, editor, home)
        self.assertEqual(editor.received + home.received, [])

    def test_update_from_the_manager_is_told_to_the_editor(self):
        manager, editor = self.peer(MANAGER), self.peer(EDITOR)
        self.send(manager, self.bundle("watch-setting-updated"))
        self.assert_received(manager, self.reply("watch-setting-updated"))
        self.assert_received(editor, {"type": "watch-setting-updated", "pkgid": C1})
        self.assert_nothing_more(manager, editor)

    def test_from_the_editor_is_answered_and_told_to_the_manager_whole(self):
        for kind in ("watch-setting-created", "watch-setting-updated"):
            with self.subTest(kind):
                manager, editor = self.peer(MANAGER), self.peer(EDITOR)
                self.send(editor, self.bundle(kind))
                self.assert_received(editor, self.reply(kind))
                # Without a preview of the sender's there is no word of one.
                self.assert_received(manager, self.bundle(kind))
                self.assert_nothing_more(manager, editor)
                manager.close()
                editor.close()

    def test_from_home_and_settings_goes_to_the_manager_too(self):
        for identity in (HOME, SETTINGS):
            with self.subTest(identity[0]):
                manager, sender = self.peer(MANAGER), self.peer(identity)
                self.send(sender, self.bundle())
                self.assert_received(sender, self.reply())
                self.assert_received(manager, self.bundle())
                manager.close()
                sender.close()

    def test_takes_the_preview_that_the_sender_supplies(self):
        manager, editor = self.peer(MANAGER), self.peer(EDITOR)
        icon = self.root / "icon.png"
        icon.write_bytes(self.ro(E1, E1 + ".png").read_bytes())
        self.send(editor, self.bundle(**{"data/icon_path": str(icon)}))
        self.assert_received(editor, self.reply())
        self.assert_received(manager, self.bundle(**{"data/icon_path": str(self.preview(C1))}))
        self.assertEqual(self.preview(C1).read_bytes(), icon.read_bytes())

    def test_keeps_the_result_xml_byte_for_byte(self):
        manager = self.peer(MANAGER)
        text = self.result_xml(C1) + "<!-- 서울 -->\r\n"
        self.send(manager, self.bundle(**{"data/xml_data": text}))
        self.assert_received(manager, self.reply())
        self.assertEqual(self.rw(C1, C1 + "_result.xml").read_bytes(), text.encode())
        self.assertTrue(self.rw(C1, "watchface.xml").read_text().lstrip().startswith("<?xml"))

    def test_draws_the_preview_that_the_document_describes(self):
        manager = self.peer(MANAGER)
        self.send(manager, self.bundle())
        self.wait_for_preview()
        first = self.preview(C1).read_bytes()
        edited = self.result_xml(C1)
        import re
        options = re.findall(r'<option id="([a-z0-9-]+)"', edited)
        self.assertGreater(len(options), 1)
        group, choices = re.search(r'<palette id="([a-z0-9-]+)".*?</palette>', edited, re.S).group(1, 0)
        last = re.findall(r'<option id="([a-z0-9-]+)"', choices)[-1]
        edited = re.sub(r"<selection\s*/>|<selection>.*?</selection>", "", edited, flags=re.S)
        edited = re.sub(r"(</[a-z-]+>\s*)$", '<selection><pick group="%s" option="%s"/></selection>\\1' % (group, last),
                        edited)
        self.send(manager, self.bundle("watch-setting-updated", **{"data/xml_data": edited}))
        wait_for(lambda: self.preview(C1).read_bytes() != first)

    def test_of_a_rejected_document_fails_and_stores_nothing(self):
        manager, editor = self.peer(MANAGER), self.peer(EDITOR)
        before = self.tree()
        self.send(manager, self.bundle(**{"data/xml_data": "<face>\n  <oops\n</face>"}))
        fail = {"type": "watch-setting-created", "pkgid": C1, "data/label": "Mirel", "status": "fail"}
        self.assert_received(manager, fail)
        self.assert_nothing_more(manager, editor)
        self.assertEqual(editor.received, [])
        self.assertEqual(self.tree(), before)
        self.assertRegex(self.log(), r"E/data-util\(\d+\): 3:\d+: E-SYNTAX: ")

    def test_without_a_document_fails_and_changes_nothing(self):
        manager = self.peer(MANAGER)
        before = self.tree()
        self.send(manager, {"type": "watch-setting-created", "pkgid": C1, "data/label": "Mirel"})
        self.assert_received(manager, {"type": "watch-setting-created", "pkgid": C1, "data/label": "Mirel",
                                       "status": "fail"})
        self.assertEqual(self.tree(), before)

    def test_in_bytes_is_the_same_as_in_a_string(self):
        manager = self.peer(MANAGER)
        self.send(manager, self.bundle(**{"data/xml_data": self.result_xml(C1).encode()}))
        self.assert_received(manager, self.reply())
        self.assertEqual(self.rw(C1, C1 + "_result.xml").read_text(), self.result_xml(C1))


class TheCurrentFace(WatchTest):
    def key(self, key):
        return self.wfctl("key", "get", key).strip()

    def test_follows_an_idle_change_which_the_manager_is_told_of(self):
        manager, home = self.peer(MANAGER), self.peer(HOME)
        self.send(home, {"type": "watch-idle-changed", "pkgid": E1})
        self.assert_received(manager, {"type": "watch-idle-changed", "pkgid": E1})
        self.assertEqual(self.key("db/wms/clocks_set_idle"), "com.corvane.watchface")
        self.assertEqual(self.key("file/private/com.corvane.watchface/watchface_name"), E1)
        self.assertEqual(self.wfctl("pref", "get", SERVICE[0], "wfs-pref-idle-change-request-from").strip(), HOME[0])

    def test_is_not_echoed_to_the_manager_that_changed_it(self):
        manager = self.peer(MANAGER)
        self.send(manager, {"type": "watch-idle-changed", "pkgid": C1})
        wait_for(lambda: C1 in self.wfctl("current"))
        self.assert_nothing_more(manager)
        self.assertEqual(manager.received, [])

    def test_is_what_the_tool_set(self):
        self.wfctl("set", C1)
        self.assertIn(C1, self.wfctl("current"))
        self.wfctl("set", E1)
        self.assertIn(E1, self.wfctl("current"))


if __name__ == "__main__":
    unittest.main()
