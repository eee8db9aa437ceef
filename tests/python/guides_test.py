"""Every command and program of the guides, in their order, each guide in a folder of its own.

A block behind a line <!-- file: NAME --> is written to that file. In a block `console` each line `$ ...` is a command, and the
lines below it are what it prints. A block `python` is a program, and the block `text` behind it what that prints. With
KAPUTIL_UPDATE_DOCS in the environment what is printed is written into the guides.
"""

import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

GUIDES = pathlib.Path(__file__).parents[2] / "docs" / "guide"
BUILD = os.environ["KAPUTIL_BUILD"]
BLOCK = re.compile(r"(?:^<!-- (?P<kind>file|example): (?P<name>\S+) -->\n)?^```(?P<language>\w*)\n(?P<text>.*?)^```$",
                   re.DOTALL | re.MULTILINE)


def pages():
    return sorted(GUIDES.glob("*/*.md"))


class Reader:
    """Somebody who does what a guide says."""

    def __init__(self, folder):
        self.folder = folder
        self.environment = {**os.environ, "KAPUTIL_HOME": str(folder / "settings"), "KAPUTIL_LOCALE": "it-IT",
                            "LC_ALL": "C.UTF-8", "PATH": f"{BUILD}{os.pathsep}{os.environ['PATH']}"}
        self.environment.pop("KAPUTIL_CONNECTION", None)

    def run(self, *command, **changes):
        environment = {**self.environment, **changes}
        done = subprocess.run(command, cwd=self.folder, env=environment, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              encoding="utf-8", timeout=120)
        return "".join(f"{line.rstrip()}\n" for line in done.stdout.splitlines())

    def console(self, text):
        """The block with what its commands print, in the place of what stands there."""
        shown = ""
        for line in text.splitlines():
            if line.startswith("$ "):
                # What must be loaded first into an interpreter with the package is not for other programs.
                shown += f"{line}\n" + self.run("bash", "-c", line[2:], LD_PRELOAD="")
        return shown

    def follow(self, page):
        """The page as it should be."""
        printed = None

        def block(found):
            nonlocal printed
            text, language = found["text"], found["language"]
            whole = found[0]
            if found["kind"] == "file":
                (self.folder / found["name"]).write_text(text, encoding="utf-8")
            elif found["kind"] is None and language == "console":
                return whole.replace(f"\n{text}```", f"\n{self.console(text)}```")
            elif found["kind"] is None and language == "python":
                printed = self.run(sys.executable, "-c", text, PYTHONIOENCODING="utf-8")
            elif language == "text" and printed is not None:
                whole, printed = f"```text\n{printed}```", None
            return whole

        return BLOCK.sub(block, page)


class Guides(unittest.TestCase):
    maxDiff = None

    def test_what_they_show_is_what_happens(self):
        for path in pages():
            with self.subTest(path.relative_to(GUIDES)), tempfile.TemporaryDirectory() as folder:
                text = path.read_text(encoding="utf-8")
                followed = Reader(pathlib.Path(folder)).follow(text)
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
