"""What is installed, for the suites of this folder."""

import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import time
import unittest

SOURCE = pathlib.Path(os.environ["WATCH_SOURCE"])
PREFIX = pathlib.Path(os.environ["WATCH_PREFIX"])
SERVICE = "com.corvane.watchface-service"
CAPTURE = "com.corvane.watchface-capture"
PROGRAMS = {SERVICE: "watchface-service", CAPTURE: "watchface-capture"}
C1 = "com.corvane.watchface-mirel-c1"


def applications():
    """The table of applications: {id: user}."""
    table = (SOURCE / "platform/core/application-table.h").read_text()
    ids = dict(re.findall(r'constexpr std::string_view (k\w+Id) = "([^"]+)"', table))
    rows = re.findall(r'^    \{(?:"([^"]+)"|(k\w+Id)),.*"([^"]+)", +(?:""|k\w+)\},$', table, re.M)
    users = {name or ids[constant]: user for name, constant, user in rows}
    assert len(users) >= 10, users
    return users


def run(*command, status=0, **options):
    """What the command printed; fails when it ends otherwise."""
    done = subprocess.run([str(word) for word in command], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, timeout=60, **options)
    if done.returncode != status:
        raise AssertionError("%s ended with %s:\n%s" % (" ".join(map(str, command)), done.returncode, done.stdout))
    return done.stdout


def wait_for(condition, timeout=20):
    deadline = time.monotonic() + timeout
    while not condition():
        if time.monotonic() > deadline:
            raise AssertionError("not true within %s s: %s" % (timeout, condition))
        time.sleep(0.01)


def temporary_folder(test):
    """A folder that other users may enter, gone with the test (or the class)."""
    folder = pathlib.Path(tempfile.mkdtemp(prefix="watch-packaging-"))
    (test.addClassCleanup if isinstance(test, type) else test.addCleanup)(shutil.rmtree, folder, ignore_errors=True)
    folder.chmod(0o755)
    return folder


def needs(program):
    return unittest.skipUnless(shutil.which(program), "there is no %s here" % program)


def plain_environment(**more):
    """Nothing of the developer's own session."""
    return dict({"PATH": os.environ["PATH"], "HOME": "/nonexistent", "LANG": "C.UTF-8", "NO_COLOR": "1"}, **more)


def sections(path):
    """An activation file or a unit: {key: [value, …]}."""
    values = {}
    for line in path.read_text().splitlines():
        key, equals, value = line.partition("=")
        if equals and not line.startswith("#"):
            values.setdefault(key, []).append(value)
    return values
