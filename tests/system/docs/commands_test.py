"""Every command that a page shows works as it stands there.

    commands_test.py PAGE...        pages, as paths below the source tree

A page's commands are run in their order in one shell, in a folder of their own where docs/ and watchfaces/ are what they
are in the source tree, with a private watch at /tmp/my-watch that is up. Paths below /tmp lie in the test's folder.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

PREFIX = pathlib.Path(os.environ["WATCH_PREFIX"])
SOURCE = pathlib.Path(__file__).resolve().parents[3]
FACES = PREFIX / "share/watch/com.corvane.watchface/shared/res/watchlist"
C1 = "com.corvane.watchface-mirel-c1"

# What a line begins with that is run.
COMMAND = re.compile(r"(([A-Z_]+=\S+ )?(wfctl|/usr/bin/python3)|busctl|cp|mkdir|\.|export) ")

# What is shown and not run here, and why.
NOT_RUN = {
    "wfctl monitor com.corvane.watchface-service": "waits for traffic",
    "wfctl install /usr/share": "needs the packages installed",
    "export PATH=$PWD/build/run": "the path of the build that is tested is set already",
}
# Commands that may end otherwise than with 0.
MAY_END_WITH = {
    "wfctl listen": (0, 3),    # nothing came in time
    "wfctl key watch": (0, 3),
    "wfctl monitor": (0, 3),
    "wfctl doctor": (0, 1, 9),  # what it finds depends on what the page did before
}


def code_lines(page):
    """(number, line) of the page's code, without its indentation."""
    fenced = False
    for number, line in enumerate(page.read_text().splitlines(), 1):
        if line.startswith("```"):
            fenced = not fenced
        elif fenced:
            yield number, line
        elif line.startswith("    "):
            yield number, line[4:]


def commands(page):
    """(number, text) of each command: with the lines that continue it."""
    lines = iter(code_lines(page))
    for number, line in lines:
        if not COMMAND.match(line):
            continue
        while line.endswith("\\"):
            line += "\n" + next(lines)[1]
        end = re.search(r"<<'(\w+)'", line)
        while end and not line.endswith("\n" + end[1]):
            line += "\n" + next(lines)[1]
        if not any(line.startswith(text) for text in NOT_RUN):
            yield number, line


def statuses(command):
    return next((s for begin, s in MAY_END_WITH.items() if command.startswith(begin)), (0,))


class APage(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="watch-docs-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.tmp, self.here = self.folder / "tmp", self.folder / "here"
        self.tmp.mkdir()
        self.here.mkdir()
        for name in ("docs", "watchfaces"):
            (self.here / name).symlink_to(SOURCE / name)
        shutil.copy(FACES / C1 / (C1 + "_result.xml"), self.here / "my-face_result.xml")
        for name in ("holiday.jpg", "more.png", "cat.jpg"):
            shutil.copy(FACES / C1 / (C1 + ".png"), self.here / name)
        session = ("LC_ALL", "LC_TIME", "TZ", "DBUS_SESSION_BUS_ADDRESS", "WATCH_ROOT", "WATCH_RESOURCES")
        self.environment = {k: v for k, v in os.environ.items() if k not in session}
        self.environment.update(LANG="en_GB.UTF-8", TZ="UTC", NO_COLOR="1",
                                PATH="%s:%s" % (PREFIX / "bin", os.environ["PATH"]))
        self.addCleanup(self.end_watches)

    def end_watches(self):
        for watch in self.tmp.iterdir():
            self.shell("wfctl down --root '%s'" % watch)

    def shell(self, script):
        return subprocess.run(["bash", "-c", script], cwd=self.here, env=self.environment, timeout=120,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)

    def adapted(self, command):
        command = re.sub(r"--timeout \d+", "--timeout 2", command)  # where nothing comes, nothing is waited for
        return command.replace("/tmp/", str(self.tmp) + "/")

    def check(self, page):
        shown = list(commands(page))
        self.assertTrue(shown, "%s shows no command" % page)
        script = ""
        if not shown[0][1].startswith("wfctl up"):
            script += "wfctl up --root '{0}' && . '{0}/watch.env' || exit 99\n".format(self.tmp / "my-watch")
        for number, command in shown:
            script += "echo '@@ line %d' >&2\n%s\n" % (number, self.adapted(command))
            if not command.rstrip().endswith("&"):
                allowed = " || ".join("[ $status -eq %d ]" % s for s in statuses(command))
                script += "status=$?; %s || { echo \"@@ status $status\"; exit 98; }\n" % allowed
        done = self.shell(script + "wait\n")
        self.assertEqual(done.returncode, 0, "%s\n%s\n%s" % (page, done.stdout[-3000:], self.logs()))

    def logs(self):
        return "\n".join("%s:\n%s" % (log, log.read_text(errors="replace")[-4000:]) for log in self.tmp.glob("*/watch.log"))


def test_of(page):
    return lambda self: self.check(SOURCE / page)


for page in sys.argv[1:]:
    setattr(APage, "test_" + page, test_of(page))

if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
