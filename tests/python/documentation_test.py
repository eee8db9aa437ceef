"""The documentation's examples, run as Python writes them: what they print is what stands behind them."""

import contextlib
import datetime
import io
import os
import re
import subprocess
import sys
import tempfile
import unittest

import kaputil
from kaputil import _native
from support import ItalianTest


class Form:
    """A form as the examples have it on the screen."""

    def __init__(self):
        self.Left, self.Top, self.Width, self.Height, self.Tag = 0, 0, 9000, 6000, ""


class Box:
    """A text box."""

    _default_member_ = "Text"

    def __init__(self, text):
        self.Text = text


class Documenti:
    """A business class as programs have them."""

    def __init__(self):
        self.Proprieta, self.Errore = "", kaputil.Dispatch("KapUtil.CErrore")

    def Read(self, Connessione):
        self.Proprieta = "<NUMERO>12</NUMERO>"
        return True

    def Update(self, Connessione):
        return True

    def Delete(self, Connessione):
        return True

    def PgUpDown(self, sTasto, Connessione):
        return True

    def XCP(self, CampoAttivo, Parametri, Connessione):
        return True


def surroundings():
    """What the examples take for granted: a program's own objects."""
    return {"kaputil": kaputil, "datetime": datetime, "frmPadre": Form(), "frmFiglio": Form(), "Documento": Documenti(),
            "txtCitta": Box(""), "txtCittaPrecedente": Box("Bari")}


def expectations(script):
    """The comments behind what the example prints, in order."""
    parts = (line.rpartition("  # ") for line in script.splitlines() if line.lstrip().startswith("print("))
    return [comment for _, mark, comment in parts if mark]


def plain_numbers(line):
    """Whole numbers as every language but Python shows them, also those with a fraction."""
    return re.sub(r"\b(\d+)\.0\b", r"\1", line)


class Examples(ItalianTest):
    def setUp(self):
        super().setUp()
        self.addCleanup(os.chdir, os.getcwd())
        for name in ("KAPUTIL_HOME", "DISPLAY", "WAYLAND_DISPLAY"):
            self.addCleanup(self.restore, name, os.environ.get(name))
            self.restore(name, None)  # without a screen no program opens drafts and no key is pressed

    @staticmethod
    def restore(name, value):
        if value is None:
            os.environ.pop(name, None)
        else:
            os.environ[name] = value

    def run_example(self, script):
        """What an example prints, in a folder of its own, which also is its user's."""
        printed = io.StringIO()
        with tempfile.TemporaryDirectory() as folder:
            os.chdir(folder)
            os.environ["KAPUTIL_HOME"] = folder
            kaputil.message_log(os.path.join(folder, "messages.log"))
            try:
                with contextlib.redirect_stdout(printed):
                    exec(compile(script, "example", "exec"), surroundings())
            finally:
                kaputil.message_log(None)
                os.chdir("/")
        return printed.getvalue().splitlines()

    def test_they_run_and_print_what_they_say(self):
        shown = _native.examples()
        for name, script in shown:
            with self.subTest(name):
                lines = iter(plain_numbers(line) for line in self.run_example(script))
                for text in expectations(script):
                    self.assertIn(text, lines, script)  # takes the lines up to it: they come in this order
        self.assertGreater(len(shown), 100)


class Languages(unittest.TestCase):
    """The documentation is in the language of the locale."""

    def shown(self, locale, expression):
        environment = {**os.environ, "KAPUTIL_LOCALE": locale, "PYTHONIOENCODING": "utf-8"}
        program = f"import kaputil, pydoc; print(pydoc.plain(pydoc.render_doc({expression})))"
        return subprocess.run([sys.executable, "-c", program], env=environment, stdout=subprocess.PIPE,
                              encoding="utf-8", check=True).stdout

    def test_help_tells_everything_of_a_member(self):
        text = self.shown("en-GB", "kaputil.Progressivi")
        for part in ("Gives the next number of a document counter", "cDefinitivoProvvisorio: String, by reference",
                     '"P": provisional (n_Prov)', '"S": takes the number', "Errors", "94: The counter is Null",
                     'print(f.Progressivi("FAI", "D", "L", 2025, 0, cn))  # 42'):
            self.assertIn(part, text)

    def test_help_is_in_italian_for_italians(self):
        text = self.shown("it-IT", "kaputil.Progressivi")
        for part in ("Dà il prossimo numero di un contatore", "per riferimento", '"P": provvisoria (n_Prov)', "Esempio"):
            self.assertIn(part, text)

    def test_help_tells_what_a_class_is_for(self):
        text = self.shown("en-GB", "kaputil.classes.CProprieta")
        self.assertIn("A bag of named values kept as one tagged text", text)
        self.assertIn('p = kaputil.Dispatch("KapUtil.CProprieta")', text)


if __name__ == "__main__":
    unittest.main()
