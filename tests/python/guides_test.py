"""Every command and program of the guides, in their order, each guide in a folder of its own. What stands in a guide how:
guide_reader.py. With KAPUTIL_UPDATE_DOCS in the environment what is printed is written into the guides.
"""

import os
import pathlib
import re
import sys
import tempfile
import unittest

from guide_reader import BLOCK, GUIDES, Reader, pages

BUILD = os.environ["KAPUTIL_BUILD"]
FRONT_PAGE = GUIDES.parents[1] / "README.md"


class BuildReader(Reader):
    """Somebody who does what a guide says with what was built."""

    def __init__(self, folder):
        super().__init__(folder, sys.executable,
                         {**os.environ, "KAPUTIL_HOME": str(folder / "settings"), "KAPUTIL_LOCALE": "it-IT",
                          "LC_ALL": "C.UTF-8", "PATH": f"{BUILD}{os.pathsep}{os.environ['PATH']}"})


class Guides(unittest.TestCase):
    maxDiff = None

    def test_what_they_show_is_what_happens(self):
        for path in pages():
            with self.subTest(path.relative_to(GUIDES)), tempfile.TemporaryDirectory() as folder:
                text = path.read_text(encoding="utf-8")
                followed = BuildReader(pathlib.Path(folder)).follow(text)
                if "KAPUTIL_UPDATE_DOCS" in os.environ:
                    path.write_text(followed, encoding="utf-8")
                else:
                    self.assertEqual(text, followed)

    def test_they_are_there_in_both_languages_with_the_same_programs(self):
        names = [path.name for path in pages() if path.parent.name == "it"]
        self.assertEqual(names, [path.name for path in pages() if path.parent.name == "en"])
        self.assertGreater(len(names), 5)
        for name in names:
            programs = [[found["text"] for found in BLOCK.finditer((GUIDES / language / name).read_text(encoding="utf-8"))
                         if found["language"] in ("python", "sql")] for language in ("it", "en")]
            self.assertEqual(programs[0], programs[1], name)

    def test_the_front_page_shows_what_happens(self):
        page = FRONT_PAGE.read_text(encoding="utf-8")
        with tempfile.TemporaryDirectory() as folder:
            reader = BuildReader(pathlib.Path(folder))
            printed = reader.run("kaputil", "demo", "--database", "azienda.db").splitlines()
            shown = page.split("Part of what the demo shows:\n")[1].split("\n`./run demo")[0]
            lines = [line.removeprefix("    ") for line in shown.splitlines() if line]
            self.assertGreater(len(lines), 8)
            for line in lines:
                self.assertIn(line, printed)
            query, table = re.search(r"azienda> (SELECT .*?);\n(.*?) *azienda> :quit\n", page, re.DOTALL).groups()
            self.assertEqual(reader.run("kaputil", "sql", "azienda.db", "--command", query).splitlines(),
                             [line.removeprefix("    ") for line in table.splitlines()])
            called, result = re.search(r"\$ kaputil (call .*)\n    (.*)\n", page).groups()
            self.assertEqual(reader.run("kaputil", *called.split()), f"{result}\n")

    def test_the_front_page_is_short(self):
        self.assertLess(len(FRONT_PAGE.read_text(encoding="utf-8").splitlines()), 150)

    def test_their_references_lead_somewhere(self):
        for path in pages():
            for target in re.findall(r"\]\(([^)#]+)", path.read_text(encoding="utf-8")):
                self.assertTrue((path.parent / target).exists(), f"{path}: {target}")


if __name__ == "__main__":
    unittest.main()
