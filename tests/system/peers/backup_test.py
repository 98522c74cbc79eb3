"""Backups and restores in conversation with the backup agent, with real processes that die in the middle."""

import contextlib
import os
import pathlib
import random
import signal
import subprocess
import sys
import tempfile
import threading
import unittest

from jeepney.bus_messages import message_bus

from watch import (BACKUP_AGENT, C1, E1, EDITOR, FACES, HOME, MANAGER, SERVICE, U1, Refused, WatchTest,
                   wait_for)
from agent import END_OF_BACKUP, END_OF_RESTORE, Agent, keep, kept

GALLERY = "watch-bg-gallery-u1"
THEME = "watch-bg-digital"
PROGRAM = pathlib.Path(__file__).with_name("agent.py")


class BackupTest(WatchTest):
    """A watch, and the agent's cloud, which outlives it."""

    def setUp(self):
        super().setUp()
        folder = tempfile.TemporaryDirectory(prefix="watch-cloud-")
        self.addCleanup(folder.cleanup)
        self.cloud = pathlib.Path(folder.name)

    def another_watch(self):
        """A fresh one, which the test is about from here on."""
        super().setUp()

    def agent(self):
        agent = Agent(self.environment["DBUS_SESSION_BUS_ADDRESS"])
        self.addCleanup(agent.close)
        return agent

    def place(self, bg_type, name=""):
        folder = {GALLERY: "GalleryBackgrounds/U1", THEME: "Backgrounds"}[bg_type]
        return self.root / "apps" / FACES / "shared/trusted/theme" / folder / name

    def store(self, bg_type, name, content):
        self.place(bg_type).mkdir(parents=True, exist_ok=True)
        self.place(bg_type, name).write_bytes(content)

    def pictures(self):
        theme = self.root / "apps" / FACES / "shared/trusted/theme"
        return {str(p.relative_to(theme)): p.read_bytes() for p in theme.rglob("*") if p.is_file()}

    def documents(self):
        """What the user chose, of every face that was ever edited, and what is drawn of it."""
        return {str(p.relative_to(self.rw(""))): p.read_bytes() for p in self.rw("").rglob("*.xml")}

    def image(self, bg_type, name):
        return {"type": "image", "file_name": name, "file_path": str(self.place(bg_type, name)), "bg_type": bg_type}

    def face(self, name, text=None):
        return {"type": "watch", "pkgid": name, "result_xml": text or self.rw(name, name + "_result.xml").read_text()}

    def use_the_watch(self):
        """Edited faces, pictures of the user's, one of them shown, and another current face."""
        for picture, face in (("one.png", C1), ("two.png", E1)):
            (self.cloud / picture).write_bytes(self.ro(face, face + ".png").read_bytes())
        self.wfctl("bg", "add", self.cloud / "one.png", self.cloud / "two.png")
        self.wfctl("bg", "add", "--type", "digital", self.cloud / "two.png")
        self.wfctl("edit", C1, "--pick", "dial=roman", "--pick", "accent=azure", "--place", "right=battery")
        self.wfctl("edit", E1, "--pick", "show-date=off")
        self.wfctl("edit", U1, "--pick", "clock=hands", "--photo", "picture=two.png")
        self.wfctl("set", U1)


class ABackup(BackupTest):
    def test_of_a_watch_as_it_was_shipped_is_its_end_alone(self):
        agent = self.agent()
        self.assertEqual(agent.backup(), [END_OF_BACKUP])
        self.assert_nothing_more(agent)

    def test_holds_edited_faces_and_pictures_and_changes_nothing(self):
        self.use_the_watch()
        before = self.tree(), self.wfctl("key", "list")
        agent, manager, editor = self.agent(), self.peer(MANAGER), self.peer(EDITOR)
        self.assertEqual(agent.backup(), [self.face(C1), self.face(E1), self.face(U1), self.image(THEME, "two.png"),
                                          self.image(GALLERY, "one.png"), self.image(GALLERY, "two.png"),
                                          END_OF_BACKUP])
        self.assertEqual({(m.sender, m.port) for m in agent.received}, {SERVICE})
        self.assert_nothing_more(agent, manager, editor)
        self.assertEqual(manager.received + editor.received, [])
        self.assertEqual((self.tree(), self.wfctl("key", "list")), before)

    def test_loses_no_name_and_no_text_that_is_not_utf8(self):
        self.store(GALLERY, "\udcff.png", b"picture")
        self.rw(C1).mkdir(parents=True)
        self.rw(C1, C1 + "_result.xml").write_bytes(b"<\xff/>")
        self.assertEqual(self.agent().backup(), [self.face(C1, "<\udcff/>"), self.image(GALLERY, "\udcff.png"),
                                                 END_OF_BACKUP])

    def test_goes_on_behind_a_face_that_fits_into_no_message(self):
        for name, size in ((C1, 9 << 20), (E1, 100)):
            self.rw(name).mkdir(parents=True)
            self.rw(name, name + "_result.xml").write_bytes(b"x" * size)
        self.assertEqual(self.agent().backup(), [self.face(E1), END_OF_BACKUP])

    def test_does_not_wait_for_what_is_no_file(self):
        self.rw(C1).mkdir(parents=True)
        os.mkfifo(self.rw(C1, C1 + "_result.xml"))
        self.assertEqual(self.agent().backup(), [{"type": "watch", "pkgid": C1, "result_xml": ""}, END_OF_BACKUP])

    def test_is_made_for_nobody_else(self):
        self.agent()
        forger, home = self.stranger(), self.peer(HOME)
        with self.assertRaises(Refused):
            self.send(forger, {"operation": "corvane_cloud_backup"}, claim=BACKUP_AGENT[0])
        self.send(home, {"type": "watch", "operation": "corvane_cloud_backup"})
        self.assert_nothing_more(forger, home)
        self.assertEqual(forger.received + home.received, [])
        self.assertNotIn("operation = corvane_cloud_backup", self.log())


class ARestore(BackupTest):
    def backed_up(self):
        self.use_the_watch()
        keep(self.cloud, self.agent().backup())

    def shown(self):
        shows = [self.wfctl("show", name, "--json").replace(str(self.root), "ROOT") for name in (C1, E1, U1)]
        return shows + [self.wfctl("current", "--json")]

    def test_on_another_watch_ends_with_the_same_faces_selections_pictures_and_current_face(self):
        self.backed_up()
        wait_for(self.preview(U1).exists)
        documents, pictures, shown = self.documents(), self.pictures(), self.shown()
        previews = {name: self.preview(name).read_bytes() for name in (C1, E1)}
        self.another_watch()
        self.assertEqual((self.documents(), self.pictures()), ({}, {}))
        agent, manager, editor = self.agent(), self.peer(MANAGER), self.peer(EDITOR)
        items = kept(self.cloud)
        self.assertEqual(list(agent.restore(items, U1)), items + [{"type": "watch-idle-changed", "pkgid": U1}])
        self.assertEqual([m.bundle for m in agent.received], [END_OF_RESTORE])

        labels = {C1: "STR_WATCHFACE_MIREL_C1", E1: "STR_WATCHFACE_MIREL_E1", U1: "STR_WATCHFACE_MIREL_U1"}
        updates = [{"type": "watch-setting-updated", "pkgid": name} for name in (C1, E1, U1)]
        self.assert_received(editor, *updates)
        self.assert_received(
            manager,
            *({**update, "data/label": labels[update["pkgid"]], "data/xml_data": item["result_xml"]}
              for update, item in zip(updates, items)),
            *({"type": "watch-bg-add", "bg_type": bg_type, "bg_list": str(self.place(bg_type, name))}
              for bg_type, name in ((THEME, "two.png"), (GALLERY, "one.png"), (GALLERY, "two.png"))),
            {"type": "watch-idle-changed", "pkgid": U1})
        self.assert_nothing_more(agent, manager, editor)
        for name, preview in previews.items():
            wait_for(lambda: self.preview(name).exists() and self.preview(name).read_bytes() == preview)
        wait_for(self.preview(U1).exists)
        self.assertEqual((self.documents(), self.pictures(), self.shown()), (documents, pictures, shown))
        self.assertEqual(self.wfctl("pref", "get", SERVICE[0], "wfs-pref-idle-change-request-from").strip(),
                         BACKUP_AGENT[0])

    def test_gives_a_backup_that_is_the_same(self):
        self.backed_up()
        self.another_watch()
        agent = self.agent()
        list(agent.restore(kept(self.cloud)))
        again = [{**item, "file_path": str(self.cloud / item["bg_type"] / item["file_name"])}
                 if item.get("type") == "image" else item for item in agent.backup()[:-1]]
        self.assertEqual(again, kept(self.cloud))

    def test_takes_the_place_of_the_pictures_that_are_there(self):
        self.backed_up()
        pictures = self.pictures()
        self.another_watch()
        self.store(GALLERY, "mine.png", b"mine")
        self.store(GALLERY, "one.png", b"another one")
        self.store(THEME, "mine.png", b"mine")
        agent, manager = self.agent(), self.peer(MANAGER)
        list(agent.restore(kept(self.cloud)))
        deleted = [m.bundle for m in manager.wait(8) if m.bundle["type"] == "watch-bg-del"]
        self.assertEqual(deleted, [{"type": "watch-bg-del", "bg_type": THEME, "bg_list": ["mine.png"]},
                                   {"type": "watch-bg-del", "bg_type": GALLERY, "bg_list": ["mine.png", "one.png"]}])
        self.assertEqual(self.pictures(), pictures)

    def test_takes_no_pictures_without_the_face_that_shows_them(self):
        self.backed_up()
        self.another_watch()
        self.store(GALLERY, "mine.png", b"mine")
        list(self.agent().restore([item for item in kept(self.cloud) if item.get("pkgid") != U1]))
        self.assertEqual(self.pictures(), {"GalleryBackgrounds/U1/mine.png": b"mine"})
        self.assertFalse(self.rw(U1).exists())

    def test_of_an_older_familys_face_makes_it_this_familys(self):
        older = "com.corvane.watchface-kelp-u1"
        agent = self.agent()
        text = self.result_xml(U1).replace(U1, older)
        list(agent.restore([self.face(older, text)], older))
        self.assertEqual(self.rw(U1, U1 + "_result.xml").read_text(), self.result_xml(U1))
        self.assertFalse(self.rw(older).exists())
        self.assertIn(U1, self.wfctl("current"))

    def test_leaves_out_what_this_watch_cannot_take(self):
        agent, manager = self.agent(), self.peer(MANAGER)
        before = self.tree()
        list(agent.restore([self.face("com.example.face", self.result_xml(C1)), self.face(C1, "<face>oops"),
                            {"type": "watch", "pkgid": C1}, {"type": "watch"}, {"type": "image"}, {"type": "what"},
                            {"type": "image", "bg_type": GALLERY, "file_path": "/etc/hostname"},
                            {"type": "watch-idle-changed", "pkgid": "com.example.face"}]))
        self.assert_nothing_more(manager)
        self.assertEqual(manager.received, [])
        self.assertEqual(self.tree(), before)
        self.assertEqual([m.bundle for m in agent.received], [END_OF_RESTORE])


class DeadlyAgent(Agent):
    """Kills a process with one of the messages that it receives."""

    victim = deadly = None

    def _take(self, message):
        super()._take(message)
        if len(self.received) == self.deadly:
            os.kill(self.victim, signal.SIGKILL)
            self.deadly = None


class AnInterruptedConversation(BackupTest):
    PICTURES = 60

    def backed_up(self):
        self.use_the_watch()
        for number in range(self.PICTURES):
            self.store(GALLERY, "%03d.png" % number, bytes([number]) * 50_000)
        keep(self.cloud, self.agent_once(Agent.backup))

    def agent_once(self, what, *arguments):
        """What a new agent does, which is gone afterwards."""
        agent = self.agent()
        try:
            return what(agent, *arguments)
        finally:
            agent.close()

    def restore(self, agent):
        return list(agent.restore(kept(self.cloud), E1))

    def assert_restored(self):
        items = kept(self.cloud)
        for item in items:
            if item["type"] == "watch":
                self.assertEqual(self.rw(item["pkgid"], item["pkgid"] + "_result.xml").read_text(), item["result_xml"])
        self.assertEqual(self.pictures(), {str(self.place(i["bg_type"], i["file_name"]).relative_to(
            self.place(GALLERY).parents[1])): pathlib.Path(i["file_path"]).read_bytes()
            for i in items if i["type"] == "image"})
        self.assertIn(E1, self.wfctl("current"))

    def assert_whole(self):
        """No file that is there is half of one."""
        items = kept(self.cloud)
        texts = {i["pkgid"]: i["result_xml"] for i in items if i["type"] == "watch"}
        for path in self.rw("").glob("*/*_result.xml"):
            self.assertEqual(path.read_text(), texts[path.parent.name])
        contents = {pathlib.Path(i["file_path"]).read_bytes() for i in items if i["type"] == "image"}
        for path in self.place(GALLERY).glob("*.png"):
            with contextlib.suppress(FileNotFoundError):  # the service still works off what it was sent
                self.assertIn(path.read_bytes(), contents)

    def test_begun_again_after_the_service_died_in_a_backup_is_whole(self):
        self.use_the_watch()
        for number in range(3000):
            self.store(GALLERY, "%04d.png" % number, b"picture")
        whole, before = self.agent_once(Agent.backup), self.tree()
        cuts = 0
        for count in range(1, 400, 10):
            agent = DeadlyAgent(self.environment["DBUS_SESSION_BUS_ADDRESS"])
            pid = agent.victim = self.pid_of(SERVICE[0])
            agent.deadly = count
            with contextlib.suppress(Refused):
                agent.ask_for_backup()
            wait_for(lambda: self.pid_of(SERVICE[0]) != pid)
            agent.call(message_bus.GetNameOwner(BACKUP_AGENT[0]))  # its answer comes behind all that was sent
            got = [m.bundle for m in agent.received]
            self.assertEqual(got, whole[:len(got)])
            self.assertEqual(agent.backup(), whole)
            agent.close()
            cuts += len(got) < len(whole)
            if cuts == 3:
                break
        self.assertEqual(cuts, 3)
        self.assertEqual(self.tree(), before)

    def test_begun_again_after_the_service_died_in_a_restore_ends_the_same(self):
        self.backed_up()
        self.another_watch()
        moments = random.Random(5)  # the same moments every time
        self.agent_once(Agent.finish)  # so that the service runs
        for _ in range(8):
            pid = self.pid_of(SERVICE[0])
            killer = threading.Timer(moments.uniform(0, 0.3), os.kill, (pid, signal.SIGKILL))
            killer.start()
            with contextlib.suppress(Refused):  # one message dies with it
                self.agent_once(self.restore)
            killer.join()
            wait_for(lambda: self.pid_of(SERVICE[0]) != pid)
            self.assert_whole()
            self.agent_once(self.restore)
            self.assert_restored()

    def test_that_goes_on_after_the_service_died_takes_no_more_pictures(self):
        self.backed_up()
        self.another_watch()
        agent = self.agent()
        faces = [i for i in kept(self.cloud) if i["type"] == "watch"]
        images = [i for i in kept(self.cloud) if i["type"] == "image"]
        agent.begin()
        for item in faces + images[:3]:
            agent.give(item)
        taken = self.pictures()
        self.assertEqual(len(taken), 3)
        self.kill(SERVICE[0])
        for item in images[3:]:
            agent.give(item)
        self.assertEqual(self.pictures(), taken)
        self.restore(agent)
        self.assert_restored()

    def killed_agent(self, word, lines):
        """An agent in a process of its own, killed once it has said that many lines."""
        agent = subprocess.Popen([sys.executable, PROGRAM, word, self.cloud, E1], env=self.environment,
                                 stdout=subprocess.PIPE, text=True)
        for _ in range(lines):
            self.assertTrue(agent.stdout.readline())
        agent.kill()
        agent.wait(20)
        agent.stdout.close()

    def test_begun_again_after_the_agent_died_in_a_backup_is_whole(self):
        self.backed_up()
        whole, before = self.agent_once(Agent.backup), self.tree()
        for lines in (0, 1, 5, 40):
            self.killed_agent("backup", lines)
            self.assertEqual(self.agent_once(Agent.backup), whole)
        self.assertEqual(self.tree(), before)

    def test_begun_again_after_the_agent_died_in_a_restore_ends_the_same(self):
        self.backed_up()
        self.another_watch()
        pid = self.pid_of(SERVICE[0])
        for lines in (1, 3, 4, 30):
            self.killed_agent("restore", lines)
            self.assert_whole()
            self.agent_once(self.restore)
            self.assert_restored()
        self.assertEqual(self.pid_of(SERVICE[0]), pid)


if __name__ == "__main__":
    unittest.main()
