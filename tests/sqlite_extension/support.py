"""What the tests of the module for SQLite share."""

import os
import pathlib
import sqlite3
import subprocess
import tempfile
import unittest

BUILD = pathlib.Path(os.environ["KAPUTIL_BUILD"])
MODULE = str(BUILD / "kaputil_sqlite")


def command_line(*words, given=""):
    """Runs kaputil and gives its output; what is loaded into this interpreter first is not for it."""
    environment = {key: value for key, value in os.environ.items() if key != "LD_PRELOAD"}
    done = subprocess.run([BUILD / "kaputil", *words], input=given, env=environment, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, text=True)
    if done.returncode != 0:
        raise AssertionError(done.stderr)
    return done.stdout


class DatabaseTest(unittest.TestCase):
    """A test with a file of the library in a folder of its own."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.file = self.folder / "azienda.db"

    def make(self, script):
        command_line("sql", str(self.file), given=script)

    def opened(self):
        """The file as SQLite alone opens it."""
        connection = sqlite3.connect(self.file)
        self.addCleanup(connection.close)
        return connection

    def loaded(self):
        """The file with the module."""
        connection = self.opened()
        connection.enable_load_extension(True)
        connection.load_extension(MODULE)
        return connection

    def rows(self, query, *parameters, connection=None):
        return (connection or self.loaded()).execute(query, parameters).fetchall()
