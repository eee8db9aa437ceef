"""What help(), dir(), repr() and completion show, all of it from the catalogue."""

import inspect
import os
import pydoc
import rlcompleter
import unittest

os.environ["KAPUTIL_LOCALE"] = "en-GB"  # of what is documented when the package is imported

import kaputil  # noqa: E402
from support import ItalianTest, connection  # noqa: E402


class EnglishTest(ItalianTest):
    """A test under the English locale, in whose language classes are documented when they are first used."""

    def setUp(self):
        super().setUp()
        kaputil.set_locale("en-GB")


def shown(subject):
    """What help() prints of it."""
    return pydoc.plain(pydoc.render_doc(subject))


class Objects(EnglishTest):
    def test_they_show_their_class(self):
        self.assertEqual(repr(kaputil.Dispatch("KapUtil.CProprieta")), "<kaputil CProprieta>")
        self.assertEqual(repr(kaputil.OpenRecordset("SELECT 1 AS A", connection()).Fields), "<kaputil Fields>")

    def test_their_directory_is_their_members(self):
        bag = kaputil.Dispatch("KapUtil.CProprieta")
        self.assertEqual(dir(bag), ["Count", "Elimina", "Leggi", "NomeProprieta", "Scrivi"])

    def test_methods_have_signatures_with_defaults(self):
        self.assertEqual(str(inspect.signature(kaputil.Dispatch("KapUtil.CProprieta").Leggi)),
                         "(sNomeProprieta: Any = 'DEFAULT') -> Any")
        self.assertEqual(str(inspect.signature(kaputil.NomeMese)), "(nMese: int, sLingua: str = 'ING') -> str")
        self.assertEqual(str(inspect.signature(kaputil.classes.Recordset.Open)),
                         "(self, Source: Any = Ellipsis, ActiveConnection: Any = Ellipsis, CursorType: int = -1, "
                         "LockType: int = -1, Options: int = -1) -> None")

    def test_methods_are_documented_with_parameters_errors_and_an_example(self):
        bag = kaputil.Dispatch("KapUtil.CProprieta")
        self.assertEqual(bag.Elimina.__doc__, "\n".join([
            "Removes a property, its tags with its value.",
            "",
            "Only the first property of that name goes; when there is none nothing happens.",
            "",
            "sNomeProprieta: String, by reference",
            "    The name, in any case. It is only read.",
            "",
            "Example",
            '    p.Scrivi("A", 1)',
            '    p.Scrivi("B", 2)',
            '    p.Elimina("a")',
            "    print(p.Leggi())  # <B>2</B>",
        ]))
        for part in ('    94: The name is empty and the value Null.', '        "": the value becomes the whole property string'):
            self.assertIn(part, bag.Scrivi.__doc__)

    def test_help_shows_signature_and_documentation(self):
        text = shown(kaputil.Dispatch("KapUtil.CProprieta").Scrivi)
        self.assertIn("Scrivi(sNomeProprieta: str, sValore: Any) -> None method of kaputil.classes.CProprieta", text)
        self.assertIn("Sets a property, or the whole text when the name is empty.", text)

    def test_help_of_an_object_shows_its_class_with_every_member(self):
        text = shown(kaputil.OpenRecordset("SELECT 1 AS A", connection()))
        for part in ("The rows of a query, one of them current", "MoveFirst(self) -> None",
                     "Moves to the first record.", "AbsolutePosition", "The default member."):
            self.assertIn(part, text)

    def test_properties_are_completed_without_being_read(self):
        closed = kaputil.Dispatch("ADODB.Recordset")
        self.assertRaisesNumber(-2146824584, getattr, closed, "EOF")
        found = rlcompleter.Completer({"rows": closed}).attr_matches("rows.E")
        self.assertEqual([word.rstrip("()") for word in found], ["rows.EOF", "rows.EditMode"])


class Package(EnglishTest):
    def test_its_directory_holds_the_global_members(self):
        for name in ("KapRound", "Errore", "Dispatch", "AutomationError", "kaHBarra", "classes"):
            self.assertIn(name, dir(kaputil))

    def test_help_shows_the_global_members(self):
        text = shown(kaputil)
        self.assertIn("KapRound(Numero: Any, Decimali: int = 0, Arrotonda: str = 'A') -> Any", text)
        self.assertIn("Dispatch(name: str) -> Any", text.replace("'", ""))

    def test_its_own_names_are_shown_where_programs_find_them(self):
        for name in ("AutomationError", "MemberNotFound", "Ref", "Variant", "Object", "Dispatch", "invoke"):
            self.assertEqual(getattr(kaputil, name).__module__, "kaputil")


class Classes(EnglishTest):
    def test_every_class_of_the_catalogue_is_there_and_those_that_members_give(self):
        for name in ("CErrore", "CProprieta", "IClassi", "StdFunctions", "Connection", "Recordset", "Fields", "Field"):
            self.assertIn(name, dir(kaputil.classes))
        for name in dir(kaputil.classes):
            self.assertTrue(issubclass(getattr(kaputil.classes, name), kaputil.Object))

    def test_objects_are_instances_of_theirs(self):
        self.assertIsInstance(kaputil.Dispatch("KapUtil.CErrore"), kaputil.classes.CErrore)
        self.assertIsInstance(kaputil.Errore, kaputil.classes.CErrore)

    def test_objects_are_not_made_by_calling_them(self):
        with self.assertRaisesRegex(TypeError, "kaputil.Dispatch"):
            kaputil.classes.CErrore()

    def test_members_stand_in_interface_order(self):
        members = [name for name in vars(kaputil.classes.CProprieta) if not name.startswith("_")]
        self.assertEqual(members, ["Elimina", "Leggi", "Scrivi", "Count", "NomeProprieta"])

    def test_other_names_are_missing(self):
        self.assertFalse(hasattr(kaputil.classes, "Manca"))

    def test_every_member_has_documentation_and_a_signature(self):
        for name in dir(kaputil.classes):
            for member, value in vars(getattr(kaputil.classes, name)).items():
                if not member.startswith("_"):
                    self.assertTrue(value.__doc__.splitlines()[0].endswith("."), f"{name}.{member}")
                    inspect.signature(value.fget if isinstance(value, property) else value)


if __name__ == "__main__":
    unittest.main()
