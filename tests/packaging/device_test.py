"""A device in small: the installed programs as the users of the table, on a bus with the installed policy, in folders that
the installed files make. Only the service manager is missing."""

import json
import pathlib
import shutil
import subprocess
import unittest

from device_bus import BusUser, DeviceBus, needs_users
from installation import (C1, CAPTURE, PREFIX, PROGRAMS, SERVICE, applications, needs, plain_environment, run,
                          temporary_folder, wait_for)

FACES = "apps/com.corvane.watchface/shared/"


@needs_users
@needs("systemd-tmpfiles")
class ADevice(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = temporary_folder(cls)
        cls.bus = DeviceBus(cls.folder)
        cls.addClassCleanup(cls.bus.close)
        # The build may lie where only its user gets.
        cls.prefix = cls.folder / "prefix"
        shutil.copytree(PREFIX, cls.prefix, symlinks=True)
        run("systemd-tmpfiles", "--root=%s" % cls.folder, "--create", PREFIX / "lib/tmpfiles.d/watch.conf")
        cls.root = cls.folder / "var/lib/watch"
        cls.environment = plain_environment(DBUS_SYSTEM_BUS_ADDRESS=cls.bus.address, WATCH_ROOT=str(cls.root))
        cls.administrator = BusUser(cls.bus, "root")
        cls.addClassCleanup(cls.administrator.close)
        cls.programs = {}
        cls.result = cls.prefix / "share/watch/com.corvane.watchface/shared/res/watchlist" / C1 / (C1 + "_result.xml")

    def setUp(self):
        # The service would have the bus start the other, which takes what only an installed bus has.
        for app in (CAPTURE, SERVICE):
            if app not in self.programs or self.programs[app].poll() == 0:  # not yet, or it left for want of work
                self.start(app)

    @classmethod
    def start(cls, app):
        # As the unit has it: a umask that keeps all from others, and no reading beside the watch's files.
        environment = dict(cls.environment, **cls.bus.users.environment, WATCH_READABLE=str(cls.folder / "etc"))
        log = open(cls.folder / (PROGRAMS[app] + ".log"), "a")
        command = cls.bus.users.becoming(applications()[app]) + [cls.prefix / "libexec/watch" / PROGRAMS[app]]
        program = subprocess.Popen(list(map(str, command)), env=environment, umask=0o077, stderr=log)
        log.close()
        cls.addClassCleanup(program.wait)
        cls.addClassCleanup(program.terminate)
        wait_for(lambda: cls.administrator.is_up(app) or program.poll() is not None)
        assert program.poll() is None, (cls.folder / (PROGRAMS[app] + ".log")).read_text()
        cls.programs[app] = program

    def wfctl(self, *arguments, user="root", status=0):
        return run(*self.bus.users.becoming(user), self.prefix / "bin/wfctl", *arguments, status=status,
                   env=dict(self.environment, **self.bus.users.environment))

    def user_of(self, path):
        uid = path.stat().st_uid
        return next(name for name, numbers in self.bus.users.numbers.items() if numbers[0] == uid)

    def may(self, user, test, path):
        command = self.bus.users.becoming(user) + ["test", test, str(self.root / path)]
        return subprocess.run(command).returncode == 0

    def test_stores_a_face_as_one_user_and_draws_it_as_another(self):
        reply = self.wfctl("install", self.result, "--json", "--as", "com.corvane.w-manager-service",
                           user="watch-manager")
        self.assertEqual(json.loads(reply)["bundle"]["status"], "success")
        face = self.root / FACES / "data/watchlist" / C1
        self.assertEqual(self.user_of(face / "watchface.xml"), "watchface")
        self.assertEqual(self.user_of(face / (C1 + ".png")), "watchface-capture")
        for user in set(applications().values()):
            self.assertTrue(self.may(user, "-r", face / (C1 + ".png")), user)
        writers = {user for user in applications().values() if self.may(user, "-w", face)}
        self.assertEqual(writers, {"watchface", "watchface-capture"})

    def test_logs_no_fault_of_rights(self):
        self.wfctl("update", self.result, "--as", "com.corvane.w-manager-service", user="watch-manager")
        for program in PROGRAMS.values():
            log = (self.folder / (program + ".log")).read_text()
            for line in log.splitlines():
                self.assertNotRegex(line, "(?i)denied|not permitted|read-only|going on without", program)

    def test_has_trusted_files_that_the_service_alone_writes_and_the_capture_application_reads(self):
        trusted = FACES + "trusted"
        self.assertEqual({user for user in applications().values() if self.may(user, "-w", trusted)}, {"watchface"})
        self.assertTrue(self.may("watchface-capture", "-r", trusted))
        self.assertTrue(self.may("watch-viewer", "-r", trusted))

    def test_has_keys_that_all_its_users_share(self):
        self.wfctl("setting", "set", "language=ko_KR", user="watch-settings")
        self.assertEqual(self.wfctl("setting", "get", "language", user="watch-home"), "ko_KR\n")
        self.wfctl("setting", "set", "language=de_DE", user="root")
        self.wfctl("setting", "set", "language=en_GB", user="watch-home")
        self.assertEqual(self.wfctl("setting", "get", "language", user="watch-settings"), "en_GB\n")

    def test_keeps_preferences_for_their_application(self):
        path = "apps/%s/prefs.db" % SERVICE
        self.wfctl("pref", "set", SERVICE, "a", "b", user="watchface")
        self.assertEqual({user for user in applications().values() if self.may(user, "-r", path)}, {"watchface"})

    def test_keeps_durations_of_its_applications_apart(self):
        home, editor = "com.corvane.w-home", "com.corvane.watchface-editor"
        self.wfctl("evaluate", "save", C1, "350", "--as", home, user="watch-home")
        self.wfctl("evaluate", "save", C1, "1", "--as", home, user="watch-editor", status=4)
        self.assertEqual(self.wfctl("evaluate", "load", C1, "--as", home, user="watch-home"), "350\n")
        self.wfctl("evaluate", "load", C1, "--as", editor, user="watch-editor", status=10)

    def test_lets_no_user_in_who_is_not_of_the_watch(self):
        for path in ("apps", "common", "keys.db", FACES + "data"):
            self.assertFalse(self.may("nobody", "-r", path), path)

    def test_takes_no_message_from_a_user_who_is_another_application(self):
        self.wfctl("send", "--as", "com.corvane.w-manager-service", SERVICE + ":watchface-service::localport",
                   "type=watch-idle-changed", "pkgid=" + C1, user="watch-home", status=4)
        self.wfctl("launch", CAPTURE, user="watch-home", status=4)
        self.assertNotIn("watch-idle-changed", (self.folder / "watchface-service.log").read_text())

    def test_is_what_a_tool_on_the_system_bus_finds(self):
        mount = 'mount --bind "$0" /var/lib && exec "$@"'
        command = ["unshare", "--mount", "sh", "-c", mount, self.root.parent]
        if subprocess.run(command + ["true"], stderr=subprocess.DEVNULL).returncode != 0:
            self.skipTest("mounting is not allowed here")
        environment = {name: value for name, value in self.environment.items() if name != "WATCH_ROOT"}
        status = json.loads(run(*command, self.prefix / "bin/wfctl", "status", "--json", env=environment))
        self.assertEqual(status["root"], "/var/lib/watch")
        environment["XDG_STATE_HOME"] = "/nonexistent"
        status = json.loads(run(*command, self.prefix / "bin/wfctl", "status", "--json", env=environment))
        self.assertEqual(status["root"], "/nonexistent/watch")


if __name__ == "__main__":
    unittest.main()
