"""The installed package: that the interpreter finds all of it where the installation puts it."""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

import kaputil
from support import run

BUILT = pathlib.Path(kaputil.__file__).parent


class Installation(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        status, output = run("cmake", "--install", os.environ["KAPUTIL_BUILD"], "--component", "python",
                             DESTDIR=folder.name)
        self.assertEqual(status, 0, output)
        self.packages = pathlib.Path(folder.name + os.environ["KAPUTIL_PYTHON_DIR"])

    def test_it_goes_where_the_interpreter_looks(self):
        self.assertIn(os.environ["KAPUTIL_PYTHON_DIR"], sys.path)

    def test_it_holds_what_the_build_has(self):
        def names(folder):
            return sorted(path.name for path in folder.iterdir() if path.name != "__pycache__")

        self.assertEqual(names(self.packages / "kaputil"), names(BUILT))

    def test_it_works_without_the_build(self):
        program = "import kaputil; print(kaputil.__file__); print(kaputil.KapRound(2.675, 2))"
        environment = {**os.environ, "PYTHONPATH": str(self.packages)}
        done = subprocess.run([sys.executable, "-c", program], env=environment, stdout=subprocess.PIPE, text=True)
        self.assertEqual((done.returncode, done.stdout), (0, f"{self.packages}/kaputil/__init__.py\n2.68\n"))


if __name__ == "__main__":
    unittest.main()
