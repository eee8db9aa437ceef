"""What docs/other_tools.md shows, as it stands there."""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import unittest

from support import BUILD, DatabaseTest

PAGE = pathlib.Path(__file__).parents[2] / "docs" / "other_tools.md"


def blocks(language):
    """The pieces of the page in a language."""
    return re.findall(rf"^```{language}\n(.*?)^```$", PAGE.read_text(), re.DOTALL | re.MULTILINE)


class Documentation(DatabaseTest):
    def setUp(self):
        super().setUp()
        self.make(blocks("sql")[0])

    def run_program(self, *words, given=""):
        # As in the folder of libraries, where the installation puts the module.
        environment = {**os.environ, "LD_LIBRARY_PATH": str(BUILD)}
        done = subprocess.run(words, input=given, cwd=self.folder, env=environment, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True)
        return done.stdout

    @unittest.skipUnless(shutil.which("sqlite3"), "there is no sqlite3")
    def test_the_shell_answers_as_the_page_says(self):
        for block in blocks("console"):
            program, *lines = block.splitlines()
            typed = [line.removeprefix("sqlite> ") for line in lines if line.startswith("sqlite> ")]
            answers = [line for line in lines if not line.startswith("sqlite> ")]
            output = self.run_program(*program.removeprefix("$ ").split(), given="\n".join(typed) + "\n")
            self.assertEqual(output.splitlines(), answers)

    def test_python_prints_what_the_page_says(self):
        for program, expected in zip(blocks("python"), blocks("text"), strict=True):
            self.assertEqual(self.run_program(sys.executable, "-c", program), expected)


if __name__ == "__main__":
    unittest.main()
