"""The stub files: that they are there, agree with the package, and make a type checker see."""

import ast
import os
import pathlib
import tempfile
import textwrap
import unittest

import kaputil
from support import run

PACKAGE = pathlib.Path(kaputil.__file__).parent
EXAMPLES = pathlib.Path(__file__).parents[2] / "examples"


def checked(*arguments):
    """Runs the type checker, which must find the package in the build and keeps nothing."""
    return run(os.environ["MYPY"], "--strict", "--warn-unused-ignores", "--cache-dir", os.devnull, *arguments,
               MYPYPATH=str(PACKAGE.parent))


def declared(name):
    """The functions, classes and variables that a stub declares at its top, and those of its classes."""
    tree = ast.parse((PACKAGE / name).read_text(encoding="utf-8"))
    names = {}
    for node in tree.body:
        if isinstance(node, ast.ClassDef):
            names[node.name] = [names_of(one) for one in node.body if names_of(one)]
        elif names_of(node):
            names[names_of(node)] = None
    return names


def names_of(node):
    if isinstance(node, ast.AnnAssign):
        return node.target.id
    return node.name if isinstance(node, ast.FunctionDef) else None


class Stubs(unittest.TestCase):
    def test_the_package_says_that_it_is_typed(self):
        self.assertTrue((PACKAGE / "py.typed").is_file())

    def test_they_declare_every_class_with_its_members_in_order(self):
        stub = declared("classes.pyi")
        self.assertEqual(sorted(stub), dir(kaputil.classes))
        for name, members in stub.items():
            self.assertEqual(members, [key for key in vars(getattr(kaputil.classes, name)) if not key.startswith("_")])

    def test_they_declare_every_global_member(self):
        stub = declared("__init__.pyi")
        for member in dir(kaputil.Dispatch("KapUtil.StdFunctions")):
            self.assertIn(member, stub)

    def test_the_package_and_its_stubs_type_check(self):
        status, output = checked("-p", "kaputil")
        self.assertEqual(status, 0, output)

    def test_the_examples_type_check(self):
        scripts = sorted(map(str, EXAMPLES.glob("*.py")))
        status, output = checked(*scripts)
        self.assertEqual(status, 0, output)

    def check(self, program):
        """The type checker's verdict on a program; lines that must not pass carry an ignore, which must be needed."""
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "program.py"
            path.write_text(textwrap.dedent(program), encoding="utf-8")
            status, output = checked(str(path))
        self.assertEqual(status, 0, output)

    def test_right_programs_pass(self):
        self.check("""
            import datetime
            import decimal
            import kaputil
            from kaputil.classes import CErrore, Recordset

            def names(rows: Recordset) -> list[str]:
                return [field.Name for field in rows.Fields]

            bag = kaputil.Dispatch("KapUtil.CProprieta")
            bag.Scrivi("Codice", 12)
            count: int = bag.Count()
            cn = kaputil.Dispatch("ADODB.Connection")
            cn.Open("Provider=KapLocal;Data Source=:memory:")
            cursor = kaputil.Ref(-1)
            rows = kaputil.OpenRecordset("SELECT 1 AS A", cn, cursor, DeleteNull=False)
            first: int = cursor.value
            names(rows)
            rows.CursorType = 3
            error: CErrore = kaputil.Errore
            error.Numero = 5
            kaputil.KapRound(decimal.Decimal("2.5"), kaputil.Variant("Integer", 1))
            kaputil.ConvertiData("25/12/2003").upper()
            kaputil.Dispatch("Posta.Programma").Qualsiasi(1)
            kaputil.register("Posta.Programma", lambda: object())
            try:
                kaputil.NomeMese(13)
            except kaputil.AutomationError as raised:
                number: int = raised.number
            kaputil.invoke(bag, "Leggi", "Codice").type.upper()
            kaputil.format(datetime.date(2003, 12, 25), "yyyy").upper()
            kaputil.kaHBarra + 1
            if rows.ActiveConnection is kaputil.Nothing or not kaputil.Empty:
                pass
            """)

    def test_wrong_programs_are_seen(self):
        self.check("""
            import kaputil

            bag = kaputil.Dispatch("KapUtil.CProprieta")
            bag.Scrivi("Codice")  # type: ignore[call-arg]
            bag.Manca()  # type: ignore[attr-defined]
            bag.Count().upper()  # type: ignore[attr-defined]
            kaputil.Manca()  # type: ignore[attr-defined]
            kaputil.NomeMese("agosto")  # type: ignore[arg-type]
            kaputil.NomeMese(nMesi=8)  # type: ignore[call-arg]
            rows = kaputil.OpenRecordset("SELECT 1 AS A", bag)
            rows.EOF = True  # type: ignore[misc]
            rows.MoveFirst().close()  # type: ignore[func-returns-value]
            kaputil.set_locale(5)  # type: ignore[arg-type]
            kaputil.register("Posta.Programma", 5)  # type: ignore[arg-type]
            """)


if __name__ == "__main__":
    unittest.main()
