"""Every kind of message from every kind of sender, on the installed service: the unit tests' own table."""

import collections
import json
import os
import pathlib
import shutil
import unittest

from jeepney import DBusAddress, HeaderFields, new_method_call

from watch import (BACKUP_AGENT, C1, C4, CAPTURE, EDITOR, FACES, HOME, MANAGER, SERVICE, SETTINGS, Peer, WatchTest,
                   port_name)

TABLE = json.loads(pathlib.Path(os.environ["WATCH_DISPATCH_TABLE"]).read_text())
SENDERS = {sender["app"]: sender for sender in TABLE["senders"]}
PORTS = dict([SETTINGS, HOME, EDITOR, MANAGER, CAPTURE, BACKUP_AGENT])
STRANGER = "com.example.app"
VIEWER = FACES
MAP = "com.corvane.worldclock-map"
STORED = "stored"
GALLERY = {"bg_type": "watch-bg-gallery-u1"}
PING = new_method_call(DBusAddress("/", bus_name=SERVICE[0], interface="org.freedesktop.DBus.Peer"), "Ping")

Told = collections.namedtuple("Told", "app port bundle")


class Everybody(Peer):
    """All peers on one connection: it sees the order in which they are told."""

    def __init__(self, address):
        super().__init__(None, None, address=address)
        self.told = []
        for app in [*SENDERS, BACKUP_AGENT[0], STRANGER]:
            if app in PORTS:
                self.own(port_name(app, PORTS[app]))
            self.own(app)

    def _take(self, message):
        before = len(self.received)
        super()._take(message)
        for received in self.received[before:]:
            self.told.append(Told(message.header.fields[HeaderFields.destination], message.body[0], received.bundle))

    def say(self, app, bundle):
        """What everybody is told because of it: what the service sends precedes its answer to a call that follows."""
        self.told = []
        self.send(*SERVICE, bundle, claim=app)
        self.call(PING)
        return self.told


class AMessageOfAKind(WatchTest):
    def setUp(self):
        super().setUp()
        self.picture = self.root / "pictures/i.png"
        self.picture.parent.mkdir()
        shutil.copy(self.ro(C1, C1 + ".png"), self.picture)
        areas = self.root / "apps" / FACES / "shared"
        self.trusted = areas / "trusted/theme/GalleryBackgrounds/U1"
        self.meanings = {"FACE": C1, "DOCUMENT": self.result_xml(C4), "PICTURE": str(self.picture), "DATE": "01/01/1970",
                         "RW:": str(areas / "data") + "/", "TRUSTED:": str(areas / "trusted") + "/"}
        for field, value in {"timezonePath": "P", "timezone": "T", "city": "C", "country": "L", "updatedMode": 2}.items():
            self.wfctl("pref", "set", SERVICE[0], "stored-g-" + field, value)
        self.everybody = Everybody(self.environment["DBUS_SESSION_BUS_ADDRESS"])
        self.addCleanup(self.everybody.close)

    def meant(self, value):
        if isinstance(value, dict):
            return {key: self.meant(text) for key, text in value.items()}
        if isinstance(value, list):
            return [self.meant(text) for text in value]
        for name, meaning in self.meanings.items():
            value = value.replace(name, meaning)
        return value

    def store(self):
        """The state that the table starts from."""
        for file, content in ((self.rw(STORED, STORED + "_result.xml"), self.meanings["DOCUMENT"]),
                              (self.trusted / "old", STORED)):
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text(content)
        for name in (C1, STORED, "a"):
            self.everybody.say(CAPTURE[0], {"type": "watch-capture-finished", "pkgid": name})
        self.everybody.say(VIEWER, {"type": "watch-bg-cancel", **GALLERY})
        self.everybody.say(VIEWER, {"type": "watch-idle-changed", "pkgid": STORED})
        self.everybody.say(MAP, {"type": "watch-prepare-update-world-clock"})

    def play(self, row, app):
        for message in row.get("before", []):
            self.everybody.say(VIEWER, self.meant(message))
        return self.everybody.say(app, self.meant(row["message"]))

    def lines(self, told):
        for app, port, bundle in told:
            self.assertEqual(port, PORTS[app])
            texts = ("[%s]" % ",".join(value) if isinstance(value, list) else value for _, value in sorted(bundle.items()))
            yield " ".join([SENDERS[app]["name"], *map("=".join, zip(sorted(bundle), texts))])

    def test_is_told_to_those_whom_it_concerns(self):
        for row in TABLE["rows"]:
            for app, sender in SENDERS.items():
                with self.subTest(row["name"], sender=sender["name"]):
                    self.store()
                    expected = [self.meant(line.replace("SENDER", sender["name"])) for line in row["told"][sender["kind"]]]
                    self.assertEqual(list(self.lines(self.play(row, app))), expected)
        self.assertEqual(self.everybody.say(CAPTURE[0], {"type": "watch-capture-finished"}), [])

    def test_from_a_stranger_is_told_to_nobody_and_changes_nothing(self):
        self.assert_nothing_comes_of_it(STRANGER, TABLE["rows"])

    def test_from_the_backup_agent_is_its_own_conversation_and_nobody_elses(self):
        self.assert_nothing_comes_of_it(BACKUP_AGENT[0], [row for row in TABLE["rows"] if "operation" not in row["message"]])

    def assert_nothing_comes_of_it(self, app, rows):
        self.store()
        files, prefs = self.tree(), self.wfctl("pref", "list", SERVICE[0])
        for row in rows:
            with self.subTest(row["name"]):
                self.assertEqual(self.everybody.say(app, self.meant(row["message"])), [])
                self.assertEqual(self.tree(), files)
        self.assertEqual(self.wfctl("pref", "list", SERVICE[0]), prefs)


if __name__ == "__main__":
    unittest.main()
