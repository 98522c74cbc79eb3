"""The units, activation files, users and folders of a device: right in themselves, and right with each other."""

import re
import shlex
import unittest

from installation import PREFIX, PROGRAMS, SERVICE, applications, needs, plain_environment, run, sections, temporary_folder

SYSTEM = PREFIX / "lib/systemd/system"
USER = PREFIX / "lib/systemd/user"


def unit(app, folder=SYSTEM):
    return folder / (PROGRAMS[app] + ".service")


class AUnit(unittest.TestCase):
    @needs("systemd-analyze")
    def test_of_the_system_is_right_to_the_service_manager(self):
        self.assertEqual(run("systemd-analyze", "verify", *(unit(app) for app in PROGRAMS)), "")

    @needs("systemd-analyze")
    def test_of_a_session_is_right_to_the_service_manager(self):
        folder = temporary_folder(self)
        (folder / "dbus.socket").write_text("[Socket]\nListenStream=%t/bus\n")
        (folder / "dbus.service").write_text("[Service]\nExecStart=/bin/true\n")
        environment = plain_environment(XDG_RUNTIME_DIR=str(folder), SYSTEMD_UNIT_PATH="%s:" % folder)
        self.assertEqual(run("systemd-analyze", "--user", "verify", *(unit(app, USER) for app in PROGRAMS),
                             env=environment), "")

    @needs("systemd-analyze")
    def test_exposes_at_most_half_a_point_of_ten(self):
        for app in PROGRAMS:
            run("systemd-analyze", "security", "--offline=true", "--threshold=5", "--no-pager", unit(app))

    def test_runs_its_application_as_the_user_of_the_table(self):
        for app, program in PROGRAMS.items():
            settings = sections(unit(app))
            activation = sections(PREFIX / "share/dbus-1/system-services" / (app + ".service"))
            self.assertEqual(settings["BusName"], [app])
            self.assertEqual(settings["Type"], ["notify"])
            self.assertEqual(settings["ExecStart"], activation["Exec"])
            self.assertEqual(settings["User"], [applications()[app]])
            self.assertEqual(activation["User"], [applications()[app]])
            self.assertEqual(activation["SystemdService"], [program + ".service"])

    def test_is_there_for_every_activation_file_that_names_one(self):
        for kind, folder in (("services", USER), ("system-services", SYSTEM)):
            for file in (PREFIX / "share/dbus-1" / kind).iterdir():
                self.assertTrue((folder / sections(file)["SystemdService"][0]).is_file(), file)

    def test_writes_only_in_folders_that_are_made_for_its_user(self):
        made = {line.split()[1] for line in (PREFIX / "lib/tmpfiles.d/watch.conf").read_text().splitlines()
                if line.startswith("d ")}
        for app in PROGRAMS:
            writable = sections(unit(app))["ReadWritePaths"][0].split()
            self.assertLessEqual(set(writable), made)
            self.assertIn("/var/lib/watch/common", writable)

    def test_of_the_capture_application_does_not_write_what_is_trusted(self):
        trusted = "/var/lib/watch/apps/com.corvane.watchface/shared/trusted"
        writers = [app for app in PROGRAMS if trusted in sections(unit(app))["ReadWritePaths"][0].split()]
        self.assertEqual(writers, [SERVICE])

    def test_starts_with_the_system_where_the_preset_says_so(self):
        preset = (PREFIX / "lib/systemd/system-preset/50-watch.preset").read_text()
        enabled = re.findall(r"^enable (.+)$", preset, re.M)
        installable = [unit(app).name for app in PROGRAMS if "WantedBy" in sections(unit(app))]
        self.assertEqual(enabled, installable)
        self.assertEqual(enabled, ["watchface-service.service"])


class AUser(unittest.TestCase):
    @needs("systemd-sysusers")
    def test_is_made_for_every_application_in_the_group_of_the_watch(self):
        root = temporary_folder(self)
        (root / "etc").mkdir()
        run("systemd-sysusers", "--root=%s" % root, PREFIX / "lib/sysusers.d/watch.conf")
        users = [line.split(":")[0] for line in (root / "etc/passwd").read_text().splitlines()]
        groups = dict(re.findall(r"^([^:]+):[^:]*:[^:]*:(.*)$", (root / "etc/group").read_text(), re.M))
        wanted = set(applications().values())
        self.assertEqual(sorted(users), sorted(wanted))
        self.assertEqual(set(groups["watch"].split(",")), wanted)
        self.assertEqual(groups["watchface"], "watchface-capture")

    def test_is_no_other_than_those_that_folders_are_made_for(self):
        told = {words[1] for words in map(shlex.split, (PREFIX / "lib/sysusers.d/watch.conf").read_text().splitlines())
                if words and words[0] in "gu"}
        for line in (PREFIX / "lib/tmpfiles.d/watch.conf").read_text().splitlines():
            if line.startswith("d "):
                self.assertLessEqual(set(line.split()[3:5]), told | {"root"}, line)


if __name__ == "__main__":
    unittest.main()
