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

    def test_their_references_lead_somewhere(self):
        for path in pages():
            for target in re.findall(r"\]\(([^)#]+)", path.read_text(encoding="utf-8")):
                self.assertTrue((path.parent / target).exists(), f"{path}: {target}")


if __name__ == "__main__":
    unittest.main()
