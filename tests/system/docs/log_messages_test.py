"""Each text that a program logs has its row in docs/log-messages.md, and each row a text that a program logs.

A row names texts as code, with … for what the running program puts in, and their priorities.
"""

import importlib.machinery
import importlib.util
import pathlib
import re
import unittest

SOURCE = pathlib.Path(__file__).resolve().parents[3]
PAGE = SOURCE / "docs/log-messages.md"


def module(path):
    loader = importlib.machinery.SourceFileLoader(path.name.replace("-", "_"), str(path))
    loaded = importlib.util.module_from_spec(importlib.util.spec_from_loader(loader.name, loader))
    loader.exec_module(loaded)
    return loaded


TEXTS = module(SOURCE / "tests/list-log-texts")

# Below which heading of the page the texts of which sources stand: the calls that log them, or make them for who
# does, with the priority and the argument that is the text (None: any).
PLATFORM = {"PLATFORM_FAULT": ("E", 0), "PLATFORM_REFUSAL": ("W", 0), "PLATFORM_NOTE": ("I", 0), "Refuse": ("W", None)}
SECTIONS = {
    "The platform": [("platform/core", PLATFORM), ("platform/linux", PLATFORM)],
    "Drawing": [("watchface-capture/src", {"CAPTURE_ERROR": ("E", 0), "CAPTURE_WARNING": ("W", 0),
                                           "CAPTURE_INFO": ("I", 0)}),
                ("watchface-capture/drawing", {"Fail": ("E", 0), "At": ("W", 0)})],
    "The document library": [("data-util/src", {"LogError": ("E", 0), "__dlog_print": ("E", 3)})],
    "Private watches": [("wfctl/src", {"SUPERVISOR_LOG": ("E", 1)})],
}

def as_shown(text):
    """A format, or a text with computed parts, as the page has it."""
    pieces = "".join("…" if isComputed else piece for piece, isComputed in TEXTS.pieces(text))
    return re.sub("…+", "…", pieces.replace(TEXTS.COMPUTED, "…"))


def logged_by_the_service():
    for log in TEXTS.log_texts():
        yield log.letter, as_shown(log.text) or "%s(…) >" % log.function.split("::")[-1]


def texts_below(folder, calls):
    """(priority, text); the priority is None where the text is no argument of `calls`."""
    for path in sorted((SOURCE / folder).glob("*.[ch]*")):
        for around, index, text, _ in TEXTS.arguments(path.read_text()):
            letter, wanted = calls.get(around[-1].split("::")[-1], (None, None))
            yield letter if wanted in (None, index) else None, as_shown(text)


def texts_of(section):
    """What is logged, as (priority, text), and the texts that are only part of what is."""
    if section == "The service":
        return set(logged_by_the_service()), set()
    found = {text for part in SECTIONS[section] for text in texts_below(*part)}
    logged = {(letter, text) for letter, text in found if letter and text.strip("…")}
    return logged, {text.strip("…") for letter, text in found if not letter}


def tables():
    """Section -> the cells of its rows."""
    rows, section = {}, None
    for line in PAGE.read_text().splitlines():
        if line.startswith("## "):
            section = line[3:]
        elif line.startswith("| ") and not line.startswith("| text |"):
            rows.setdefault(section, []).append([cell.strip() for cell in line.strip("|").split("|")])
    return rows


def documented(rows):
    for cells in rows:
        texts = re.findall(r"`([^`]*)`", cells[0])
        letters = cells[1].split("<br>")
        for i, text in enumerate(texts):
            yield letters[i if len(letters) > 1 else 0], text


class ThePageOfLogMessages(unittest.TestCase):
    def test_has_every_text_with_its_priority_and_no_other(self):
        for section, rows in tables().items():
            with self.subTest(section=section):
                logged, parts = texts_of(section)
                onPage = set(documented(rows))
                self.assertEqual(sorted(logged - onPage), [], "logged, and not on the page")
                gone = [(letter, text) for letter, text in onPage - logged if text.strip("…") not in parts]
                self.assertEqual(gone, [], "on the page, and not logged")

    def test_has_a_section_for_every_program(self):
        self.assertEqual(set(tables()), {"The service", *SECTIONS})

    def test_says_of_each_what_it_means_and_what_to_do(self):
        for rows in tables().values():
            for cells in rows:
                self.assertEqual([len(cells), all(cells)], [4, True], cells)


if __name__ == "__main__":
    unittest.main()
