"""The bus policy: in form, and on a real bus with the users of a device."""

import pathlib
import unittest

from device_bus import BusUser, DeviceBus, needs_users
from installation import CAPTURE, PREFIX, SERVICE, applications, needs, run, temporary_folder

DENIED = "org.freedesktop.DBus.Error.AccessDenied"
ANSWERED = "test.Answered"
PORT = "com.corvane.platform.MessagePort1"
APPLICATION = "com.corvane.platform.Application1"
# What speaking to an application is.
SPEAKING = [(PORT, "SendTrusted"), (PORT, "Send"), (APPLICATION, "Launch"), ("org.freedesktop.DBus.Peer", "Ping")]


class APolicyFile(unittest.TestCase):
    @needs("xmllint")
    def test_has_the_form_that_the_bus_reads(self):
        form = pathlib.Path(__file__).with_name("bus-policy.rng")
        for file in (PREFIX / "share/dbus-1/system.d").iterdir():
            run("xmllint", "--nonet", "--noout", "--relaxng", form, file)


@needs_users
class APolicy(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = temporary_folder(cls)
        cls.bus = DeviceBus(folder)
        cls.addClassCleanup(cls.bus.close)
        cls.bus_log = folder / "bus.log"
        cls.users = {}
        for user in sorted(set(applications().values())) + ["root", "nobody"]:
            cls.users[user] = BusUser(cls.bus, user)
            cls.addClassCleanup(cls.users[user].close)

    def test_is_read_without_a_complaint(self):
        self.assertNotIn("Unknown", self.bus_log.read_text())  # user, group, attribute

    def test_lets_each_user_be_its_own_applications_and_no_others(self):
        for app, owner in applications().items():
            for user, process in self.users.items():
                for name in (app, app + ".trusted.some_3aport", app + ".open.other"):
                    allowed = user in (owner, "root")
                    # One application's name may be the beginning of another's.
                    allowed = allowed or any(name.startswith(other + ".") for other, its in applications().items()
                                             if its == user)
                    with self.subTest(user=user, name=name):
                        self.assertEqual(process.own(name), True if allowed else DENIED)
                        if allowed:
                            self.assertTrue(process.release(name))

    def test_keeps_names_of_the_watch_that_no_application_has_from_its_users(self):
        for user, process in self.users.items():
            if user != "root":
                self.assertEqual(process.own("com.corvane.other"), DENIED, user)

    def owner_of(self, app):
        """Answers whoever speaks to the application."""
        owner = BusUser(self.bus, applications()[app])
        self.addCleanup(owner.close)
        self.assertTrue(owner.serve(app))

    def test_lets_the_users_of_the_watch_speak_to_its_applications(self):
        for app in (SERVICE, "com.corvane.w-home"):
            self.owner_of(app)
            for user, process in self.users.items():
                for interface, member in SPEAKING:
                    with self.subTest(user=user, app=app, interface=interface, member=member):
                        answer = process.call(app, interface, member)
                        self.assertEqual(answer, DENIED if user == "nobody" else ANSWERED)

    def test_lets_the_service_alone_speak_to_the_capture_application(self):
        self.owner_of(CAPTURE)
        for user, process in self.users.items():
            for interface, member in SPEAKING:
                with self.subTest(user=user, interface=interface, member=member):
                    answer = process.call(CAPTURE, interface, member)
                    self.assertEqual(answer, ANSWERED if user in ("watchface", "root") else DENIED)

    def test_lets_no_user_but_root_call_anything_else(self):
        self.owner_of(SERVICE)
        for user, process in self.users.items():
            for interface, member in ((APPLICATION, "Other"), ("com.corvane.Other", "Launch")):
                with self.subTest(user=user, interface=interface, member=member):
                    answer = process.call(SERVICE, interface, member)
                    self.assertEqual(answer, ANSWERED if user == "root" else DENIED)

    def test_lets_only_the_users_of_the_watch_announce_keys(self):
        watcher = BusUser(self.bus, "watch-home")
        self.addCleanup(watcher.close)
        watcher.watch_announcements()
        announcers = [user for user in self.users if user != "nobody"]
        for user in ["nobody"] + announcers:
            self.users[user].announce(user)
        self.assertEqual([watcher.next_announcement() for _ in announcers], announcers)


if __name__ == "__main__":
    unittest.main()
