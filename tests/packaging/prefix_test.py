"""A prefix that was installed: what it has, and that a watch runs from it."""

import json
import pathlib
import shutil
import subprocess
import unittest

from installation import C1, PREFIX, PROGRAMS, SERVICE, plain_environment, run, sections, temporary_folder

FILES = """
bin/wfctl
lib/sysusers.d/watch.conf
lib/systemd/system-preset/50-watch.preset
lib/systemd/system/watchface-capture.service
lib/systemd/system/watchface-service.service
lib/systemd/user/watchface-capture.service
lib/systemd/user/watchface-service.service
lib/tmpfiles.d/watch.conf
lib/watch/data-util.so
lib/watch/platform-xml.so
libexec/watch/watchface-capture
libexec/watch/watchface-service
share/dbus-1/services/com.corvane.watchface-capture.service
share/dbus-1/services/com.corvane.watchface-service.service
share/dbus-1/system-services/com.corvane.watchface-capture.service
share/dbus-1/system-services/com.corvane.watchface-service.service
share/dbus-1/system.d/com.corvane.watchface-service.conf
share/watch/schema/face-result.rng
share/watch/schema/watchface.rng
""".split()


def pages(wfctl, folder):
    """The tool's manual pages and completions, as they lie below a prefix."""
    run(wfctl, "manual", "--into", folder)
    files = [str(path.relative_to(folder)) for path in folder.rglob("*") if path.is_file()]
    return ["share/" + file + (".gz" if file.startswith("man/") and shutil.which("gzip") else "") for file in files]


class APrefix(unittest.TestCase):
    def test_has_exactly_what_is_meant_to_be_installed(self):
        faces = PREFIX / "share/watch/com.corvane.watchface/shared/res/watchlist"
        installed = sorted(str(path.relative_to(PREFIX)) for path in PREFIX.rglob("*")
                           if path.is_file() and faces not in path.parents)
        self.assertEqual(installed, sorted(FILES + pages(PREFIX / "bin/wfctl", temporary_folder(self))))

    def test_has_every_face_with_its_documents_and_preview(self):
        faces = list((PREFIX / "share/watch/com.corvane.watchface/shared/res/watchlist").iterdir())
        self.assertIn(C1, [face.name for face in faces])
        for face in faces:
            for file in (face.name + "_result.xml", "watchface.xml", face.name + ".png"):
                self.assertTrue((face / file).is_file(), face / file)

    def test_has_activation_files_that_start_its_own_programs(self):
        for folder in ("services", "system-services"):
            for app, program in PROGRAMS.items():
                activation = sections(PREFIX / "share/dbus-1" / folder / (app + ".service"))
                self.assertEqual(activation["Name"], [app])
                self.assertEqual(activation["Exec"], [str(PREFIX / "libexec/watch" / program)])

    def test_carries_a_private_watch_wherever_it_was_moved(self):
        moved = temporary_folder(self) / "moved"
        shutil.copytree(PREFIX, moved, symlinks=True)
        root = temporary_folder(self)
        wfctl = moved / "bin/wfctl"
        environment = plain_environment()
        run(wfctl, "up", "--root", root, env=environment)
        self.addCleanup(run, wfctl, "down", "--root", root, env=environment)
        result = moved / "share/watch/com.corvane.watchface/shared/res/watchlist" / C1 / (C1 + "_result.xml")
        self.assertIn('"status": "success"', run(wfctl, "install", result, "--json", "--root", root, env=environment))
        status = json.loads(run(wfctl, "status", "--json", "--root", root, env=environment))
        service = pathlib.Path("/proc/%d/exe" % status["service"]["pid"])
        self.assertEqual(service.readlink(), moved / "libexec/watch" / PROGRAMS[SERVICE])
        self.assertEqual(status["resources"], str(moved / "share/watch"))

    def test_lets_a_session_bus_start_its_programs(self):
        folder = temporary_folder(self)
        (folder / "bus.conf").write_text(
            "<busconfig><type>session</type><listen>unix:path=%s/bus</listen><servicedir>%s</servicedir>"
            '<policy context="default"><allow send_destination="*"/><allow receive_sender="*"/><allow own="*"/></policy></busconfig>'
            % (folder, PREFIX / "share/dbus-1/services"))
        address = "unix:path=%s/bus" % folder
        environment = plain_environment(DBUS_SESSION_BUS_ADDRESS=address, WATCH_ROOT=str(folder / "root"))
        bus = subprocess.Popen(["dbus-daemon", "--config-file=%s/bus.conf" % folder, "--nofork", "--print-address"],
                               stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, env=environment)
        self.addCleanup(bus.stdout.close)
        self.addCleanup(bus.wait)
        self.addCleanup(bus.terminate)
        self.assertTrue(bus.stdout.readline())
        result = PREFIX / "share/watch/com.corvane.watchface/shared/res/watchlist" / C1 / (C1 + "_result.xml")
        self.assertIn('"status": "success"', run(PREFIX / "bin/wfctl", "install", result, "--json", env=environment))


if __name__ == "__main__":
    unittest.main()
