"""The Debian packages: without complaints, with what they should have, depending on what they need."""

import os
import pathlib
import re
import unittest

from installation import SOURCE, needs, run
from prefix_test import FILES

PACKAGES = pathlib.Path(os.environ["WATCH_PACKAGES"])
VERSION = os.environ["WATCH_VERSION"]
FACES = "usr/share/watch/com.corvane.watchface/"


def package(name):
    (file,) = PACKAGES.glob(name + "_*.deb")
    return file


def field(name, key):
    return run("dpkg-deb", "--field", package(name), key).strip()


def files(name):
    listing = run("dpkg-deb", "--contents", package(name))
    return sorted(line.split(" ./", 1)[1] for line in listing.splitlines() if not line.startswith("d"))


def documents(name):
    return ["usr/share/doc/%s/%s" % (name, file) for file in ("changelog.gz", "copyright")]


@needs("dpkg-deb")
class APackage(unittest.TestCase):
    names = ("watchface-service", "wfctl", "watchfaces-mirel")

    @needs("lintian")
    def test_gives_the_checker_nothing_to_complain_of(self):
        run("lintian", "--allow-root", "--fail-on", "error,warning", *map(package, self.names))

    def test_of_the_service_has_all_but_the_tool_and_the_faces(self):
        wanted = ["usr/" + file for file in FILES if file != "bin/wfctl"]
        self.assertEqual(files("watchface-service"), sorted(
            wanted + documents("watchface-service") + ["usr/share/lintian/overrides/watchface-service"]))

    def test_of_the_tool_has_the_tool(self):
        pages = [file for file in files("wfctl") if re.match("usr/share/(man|bash-completion|zsh|fish)/", file)]
        self.assertEqual(sorted(set(files("wfctl")) - set(pages)), sorted(["usr/bin/wfctl"] + documents("wfctl")))
        for page in ("man/man1/wfctl.1.gz", "man/man1/wfctl-key-get.1.gz", "bash-completion/completions/wfctl",
                     "zsh/site-functions/_wfctl", "fish/vendor_completions.d/wfctl.fish"):
            self.assertIn("usr/share/" + page, pages)

    def test_of_the_faces_has_faces_for_every_machine(self):
        others = [file for file in files("watchfaces-mirel") if not file.startswith(FACES)]
        self.assertEqual(others, documents("watchfaces-mirel"))
        self.assertEqual(field("watchfaces-mirel", "Architecture"), "all")

    def test_names_programs_where_the_package_puts_them(self):
        for text in ("lib/systemd/system/watchface-service.service",
                     "share/dbus-1/system-services/com.corvane.watchface-service.service"):
            content = run("sh", "-c", 'dpkg-deb --fsys-tarfile "$0" | tar -xO "./usr/$1"',
                          package("watchface-service"), text)
            self.assertRegex(content, "(?m)^Exec(Start)?=/usr/libexec/watch/watchface-service$")

    def test_depends_on_the_libraries_and_the_bus(self):
        depends = field("watchface-service", "Depends")
        for wanted in ("libsystemd0", "libsqlite3-0", "libcairo2", "libicu", "dbus-system-bus", "systemd-sysusers"):
            self.assertIn(wanted, depends)
        self.assertIn("watchface-service (= %s)" % VERSION, field("wfctl", "Depends"))

    def test_recommends_the_fonts_that_watches_are_built_with(self):
        listed = re.findall(r"^run +(fonts-\S+)", (SOURCE / "packaging/packages.txt").read_text(), re.M)
        self.assertTrue(listed)
        recommended = field("watchface-service", "Recommends").split(", ")
        self.assertEqual(recommended, ["watchfaces-mirel"] + listed)

    def test_has_the_version_that_its_changelog_ends_with(self):
        first = (SOURCE / "packaging/debian/changelog").read_text().splitlines()[0]
        self.assertIn("(%s)" % VERSION, first)
        for name in self.names:
            self.assertEqual(field(name, "Version"), VERSION)


if __name__ == "__main__":
    unittest.main()
