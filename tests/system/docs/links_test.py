"""Every link of a page leads to a file of the project, and to a heading of it where it says one."""

import pathlib
import re
import unittest
import urllib.parse

SOURCE = pathlib.Path(__file__).resolve().parents[3]
PAGES = [*sorted(SOURCE.glob("*.md")), *sorted(SOURCE.glob("docs/*.md"))]


def without_code(text):
    text = re.sub(r"^```.*?^```", "", text, flags=re.S | re.M)
    return re.sub(r"`[^`\n]*`", "", text)


def anchors(page):
    """As forges make them of headings."""
    text = re.sub(r"^```.*?^```", "", page.read_text(), flags=re.S | re.M)
    headings = re.findall(r"^#+ (.*)$", text, flags=re.M)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


def links(page):
    return re.findall(r"\]\(([^)\s]+)\)", without_code(page.read_text()))


class ALink(unittest.TestCase):
    def test_leads_somewhere(self):
        for page in PAGES:
            for link in links(page):
                if urllib.parse.urlsplit(link).scheme:
                    continue
                name, _, anchor = link.partition("#")
                target = page.parent / name if name else page
                with self.subTest(page=page.name, link=link):
                    self.assertTrue(target.exists(), "no such file")
                    if anchor:
                        self.assertIn(anchor, anchors(target))

    def test_leads_from_the_readme_to_every_page(self):
        linked = {(SOURCE / link.partition("#")[0]).resolve() for link in links(SOURCE / "README.md")}
        self.assertEqual([page.name for page in PAGES if page.resolve() not in linked and page.name != "README.md"], [])


if __name__ == "__main__":
    unittest.main()
