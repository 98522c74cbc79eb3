"""The recipes for image builders, and what they ask of the build: every option named, nothing fetched, nothing of the target
run on the machine that builds."""

import hashlib
import os
import re
import shutil
import subprocess
import unittest

from installation import SOURCE, plain_environment, run, temporary_folder

YOCTO = SOURCE / "packaging/yocto/recipes-watch/watchface-service"
BUILDROOT = SOURCE / "packaging/buildroot/watchface-service"
VERSION = os.environ["WATCH_VERSION"]
TOOLS = ("flatten-face", "write-schema", "generate-twelve-hour-locales", "generate-system-files", "watchface-capture")


def recipe():
    return (YOCTO / ("watchface-service_%s.bb" % VERSION)).read_text()


def makefile():
    return (BUILDROOT / "watchface-service.mk").read_text()


def options():
    """The options of a build, by their declarations."""
    text = (SOURCE / "cmake/options.cmake").read_text()
    found = re.findall(r"^option\((\w+)|^set\((\w+) .* CACHE", text, re.M)
    return sorted(one or other for one, other in found)


def build_files():
    tracked = run("git", "-C", SOURCE, "ls-files", "*CMakeLists.txt", "*.cmake").split()
    return [SOURCE / file for file in tracked if (SOURCE / file).exists()]


class ARecipe(unittest.TestCase):
    def test_names_every_option_of_the_build(self):
        self.assertGreaterEqual(len(options()), 8)
        for option in options():
            self.assertRegex(recipe(), r"-D%s=" % option)
            self.assertRegex(makefile(), r"-D%s=" % option)

    def test_names_no_option_that_the_build_has_not(self):
        for text in (recipe(), makefile()):
            self.assertLessEqual(set(re.findall(r"-D(WATCH_\w+)=", text)), set(options()))

    def test_has_the_version_and_licence_of_the_project(self):
        self.assertIn("WATCHFACE_SERVICE_VERSION = %s\n" % VERSION, makefile())
        licence = hashlib.md5((SOURCE / "LICENSE").read_bytes()).hexdigest()
        self.assertIn("md5=" + licence, recipe())

    def test_configures_what_its_menu_offers(self):
        menu = (BUILDROOT / "Config.in").read_text()
        offered = set(re.findall(r"^config (BR2_PACKAGE_WATCHFACE_SERVICE_\w+)", menu, re.M))
        self.assertEqual(offered, set(re.findall(r"BR2_PACKAGE_WATCHFACE_SERVICE_\w+", makefile())))


class ABuildForAnotherMachine(unittest.TestCase):
    @unittest.skipUnless(shutil.which("git") and (SOURCE / ".git").exists(), "this is no checkout")
    def test_fetches_nothing(self):
        for file in build_files():
            self.assertNotRegex(file.read_text(), r"(?i)FetchContent|ExternalProject|file\(DOWNLOAD|try_run|https?://",
                                file)

    def commands(self, *arguments):
        """What the build runs of its own to make files."""
        build = temporary_folder(self)
        run("cmake", "-G", "Ninja", "-S", SOURCE, "-B", build, "-DWATCH_TESTS=OFF", "-DWATCH_BENCH=OFF",
            "-DCMAKE_SYSTEM_NAME=Linux", *arguments, env=plain_environment())
        made = subprocess.run(["ninja", "-C", build, "-t", "commands"], capture_output=True, text=True, check=True).stdout
        installs = (build / "packaging/cmake_install.cmake").read_text()
        own = re.findall(r"(?:^|&& |\")(\S*/(?:%s))(?=[ \"]|$)" % "|".join(TOOLS), made + installs, re.M)
        return build, made + installs, {program for program in own if not program.endswith(".o")}

    def test_runs_its_programs_in_the_emulator(self):
        build, text, _ = self.commands("-DCMAKE_CROSSCOMPILING_EMULATOR=/opt/emulator")
        for tool in ("flatten-face", "write-schema", "generate-twelve-hour-locales", "generate-system-files"):
            ran = re.findall(r"(\S+) \"?%s/\S*/%s\b(?!\.)" % (re.escape(str(build)), tool), text)
            self.assertIn("/opt/emulator", [word.strip('"') for word in ran], tool)

    def test_runs_programs_of_another_build_instead(self):
        _, _, ran = self.commands("-DWATCH_NATIVE_TOOLS=/opt/tools", "-DWATCH_PREVIEWS=ON")
        self.assertEqual(ran, {"/opt/tools/" + tool for tool in TOOLS})


if __name__ == "__main__":
    unittest.main()
