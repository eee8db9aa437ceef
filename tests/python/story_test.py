"""The demo of the command line, as a late-bound program that would run just so with the objects of a Windows system."""

import os
import pathlib
import sys
import tempfile
import unittest

from support import run

STORY = pathlib.Path(__file__).parents[1] / "com" / "story"


class Story(unittest.TestCase):
    def test_a_late_bound_program_tells_what_the_other_languages_tell(self):
        with tempfile.TemporaryDirectory() as folder:
            company = os.path.join(folder, "company.db")
            status, output = run(os.path.join(os.environ["KAPUTIL_BUILD"], "kaputil"), "demo", "--database", company)
            self.assertEqual(status, 0, output)
            status, output = run(sys.executable, str(STORY / "story.py"), company, folder, KAPUTIL_HOME=folder, **loading())
            self.assertEqual(output, (STORY / "story.txt").read_text("utf-8"), output)
            self.assertEqual(status, 0)


def loading():
    """What this interpreter has loaded for the package, for another one."""
    return {name: os.environ[name] for name in ("LD_PRELOAD", "PYTHONPATH") if name in os.environ}


if __name__ == "__main__":
    unittest.main()
