"""What the tests of the package share."""

import os
import subprocess
import unittest

import kaputil

MEMORY = "Provider=KapLocal;Data Source=:memory:"


class ItalianTest(unittest.TestCase):
    """A test under the Italian locale, whatever language it is run in."""

    def setUp(self):
        locale = kaputil.locale()
        kaputil.set_locale("it-IT")
        self.addCleanup(kaputil.set_locale, locale)

    def assertRaisesNumber(self, number, function, *arguments, **named):
        """The automation error with this number that the function raises."""
        with self.assertRaises(kaputil.AutomationError) as caught:
            function(*arguments, **named)
        self.assertEqual(caught.exception.number, number)
        return caught.exception


def connection(text=MEMORY):
    """An open connection."""
    opened = kaputil.Dispatch("ADODB.Connection")
    opened.Open(text)
    return opened


def table():
    """A connection to a database with a table Prova: A 1, 2, 3 and B uno, due, tre."""
    opened = connection()
    opened.Execute("CREATE TABLE Prova (A int PRIMARY KEY, B varchar(20))")
    opened.Execute("INSERT INTO Prova VALUES (1, 'uno'), (2, 'due'), (3, 'tre')")
    return opened


def run(*command, **changes):
    """Runs another program and gives its output; changes are variables of its environment, None for those it lacks.

    What must be loaded first into an interpreter with the package is not for other programs.
    """
    environment = {key: value for key, value in os.environ.items() if key not in ("LD_PRELOAD", "PYTHONPATH")}
    for key, value in changes.items():
        if value is not None:
            environment[key] = value
    done = subprocess.run(command, env=environment, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    return done.returncode, done.stdout
