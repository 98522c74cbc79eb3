"""The campaigns, measurements and long runs that the pages show are there, and take the options that are shown."""

import os
import pathlib
import re
import subprocess
import unittest

SOURCE = pathlib.Path(__file__).resolve().parents[3]
PREFIX = pathlib.Path(os.environ["WATCH_PREFIX"])
PAGES = ("docs/robustness.md", "docs/performance.md", "CONTRIBUTING.md")

# How a command's program is asked what it takes: one with --help, or a script that says so at its beginning.
ASKED = re.compile(r"(build/dev/tests/campaigns/\S+|bench/run)")
READ = re.compile(r"\b(tests/fuzz/run-long|tests/run-valgrind|tests/mutants/run|tests/campaigns/\S+\.py|\./test)\b")


def help_of(command):
    """What the program says that it takes; nothing of commands that are none of ours."""
    asked = ASKED.match(command)
    if asked:
        program = asked[1].replace("build/dev/", "").replace("bench/run", "bench/watch-bench")
        return subprocess.run([PREFIX / program, "--help"], capture_output=True, text=True, check=True).stdout
    script = READ.search(command)
    return (SOURCE / script[1]).read_text() if script else None


def words_to_know(command):
    """Its options and variables, and the groups that are measured."""
    words = [word.split("=")[0] for word in command.split() if re.match(r"-|WATCH_\w+=", word)]
    if command.startswith("bench/run"):
        words += [word for word in command.split()[1:] if re.fullmatch(r"[a-z][a-z-]*", word)]
    return words


class TheLongRuns(unittest.TestCase):
    def test_take_what_the_pages_show(self):
        shown = 0
        for page in PAGES:
            for line in (SOURCE / page).read_text().splitlines():
                command = line.split("  #")[0].strip()
                text = help_of(command) if re.match(r"    |build/|WATCH_|tests/|bench/|\./", line) else None
                if text is None:
                    continue
                shown += 1
                for word in words_to_know(command):
                    self.assertRegex(text, r"(?<![\w-])%s(?![\w-])" % re.escape(word), "%s: %s" % (page, command))
        self.assertGreater(shown, 9)


if __name__ == "__main__":
    unittest.main()
