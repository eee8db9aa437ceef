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


def install(prefix, **variables):
    status, output = run("cmake", "--install", os.environ["KAPUTIL_BUILD"], "--component", "python", "--prefix", prefix,
                         **variables)
    assert status == 0, output


class Installation(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        version = f"python{sys.version_info.major}.{sys.version_info.minor}"
        self.packages = self.folder / "prefix" / "lib" / version / "site-packages"
        install(str(self.folder / "prefix"))

    def test_the_interpreters_own_prefix_puts_it_where_the_interpreter_looks(self):
        site = os.environ["KAPUTIL_PYTHON_SITE"]
        self.assertIn(site, sys.path)
        install(str(pathlib.Path(site).parent), DESTDIR=str(self.folder / "staged"))
        self.assertTrue((self.folder / ("staged" + site) / "kaputil" / "__init__.py").is_file())

    def test_another_prefix_gets_all_of_it_and_nothing_lands_elsewhere(self):
        self.assertEqual([path.name for path in self.packages.iterdir()], ["kaputil"])
        self.assertEqual([path.name for path in (self.folder / "prefix").iterdir()], ["lib"])

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
