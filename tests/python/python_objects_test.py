"""Python objects in the library: forms, text boxes, mail clients."""

import gc
import unittest
import unittest.mock
import weakref

import kaputil
from kaputil import _native
from support import ItalianTest, connection, table


class TextBox:
    _default_member_ = "Text"

    def __init__(self, text):
        self.Text = text


class Form:
    """A form with members of every kind."""

    def __init__(self):
        self.Caption = "Vendite"
        self.caption = "minuscolo"
        self.Saved = []
        self.Box = TextBox("testo")
        self.Errore = kaputil.Dispatch("KapUtil.CErrore")
        self.Nota = None

    @property
    def Height(self):
        return 270

    @property
    def Broken(self):
        raise ValueError("si legge solo quando serve")

    def Save(self, name="", copies=1):
        self.Saved.append((name, copies))
        return len(self.Saved)

    @staticmethod
    def Twice(number):
        return 2 * number


class Members(ItalianTest):
    def setUp(self):
        super().setUp()
        self.form = Form()

    def call(self, member, *arguments, **named):
        return kaputil.invoke(self.form, member, *arguments, **named).value

    def test_names_are_matched_exactly_first_and_then_in_any_case(self):
        self.assertEqual(self.call("Caption"), "Vendite")
        self.assertEqual(self.call("caption"), "minuscolo")
        self.assertEqual(self.call("HEIGHT"), 270)
        self.assertEqual(self.call("save"), 1)

    def test_looking_for_a_name_reads_no_property(self):
        self.assertEqual(self.call("TWICE", 4), 8)
        self.assertRaisesNumber(438, self.call, "Manca")

    def test_methods_are_called_with_positional_and_named_arguments(self):
        self.call("Save", "A", 2)
        self.call("Save", copies=3)
        self.assertEqual(self.form.Saved, [("A", 2), ("", 3)])
        self.assertEqual(self.call("Twice", 2.5), 5.0)

    def test_what_can_be_called_is_called_however_it_was_made(self):
        self.form.Print = lambda: "stampato"
        self.form.Mail = unittest.mock.Mock(return_value=5)
        self.assertEqual(self.call("Print"), "stampato")
        self.assertEqual(self.call("Mail"), 5)
        self.form.Mail.assert_called_once_with()

    def test_objects_are_values_also_where_they_could_be_called(self):
        self.assertIs(self.call("Box"), self.form.Box)
        self.assertEqual(self.call("Errore"), self.form.Errore)

    def test_arguments_for_an_object_go_to_its_default_member(self):
        self.form.Fields = kaputil.OpenRecordset("SELECT 1 AS A, 'x' AS B", connection()).Fields
        self.assertEqual(self.call("Fields", "B").Value, "x")
        self.assertRaisesNumber(450, self.call, "Caption", 1)

    def test_members_made_on_demand_are_found(self):
        class Dynamic:
            def __getattr__(self, name):
                if name == "Subject":
                    return "Oggetto"
                raise AttributeError(name)

        self.assertEqual(kaputil.invoke(Dynamic(), "Subject").value, "Oggetto")
        self.assertRaisesNumber(438, kaputil.invoke, Dynamic(), "Body")
        self.assertEqual(kaputil.invoke(unittest.mock.Mock(Body="testo"), "Body").value, "testo")

    def test_none_and_nothing_are_given_as_they_are(self):
        self.assertIsNone(self.call("Nota"))
        self.form.Nota = kaputil.Nothing
        self.assertIs(self.call("Nota"), kaputil.Nothing)

    def test_missing_arguments_are_an_ellipsis(self):
        self.call("Save", ..., 2)
        self.assertEqual(self.form.Saved, [(..., 2)])


class Assignment(ItalianTest):
    def setUp(self):
        super().setUp()
        self.form = Form()

    def test_attributes_are_assigned_by_the_same_rule_of_names(self):
        _native.assign(self.form, "Caption", "Acquisti")
        _native.assign(self.form, "NOTA", 5)
        self.assertEqual((self.form.Caption, self.form.caption, self.form.Nota), ("Acquisti", "minuscolo", 5))
        self.assertNotIn("NOTA", vars(self.form))

    def test_objects_are_assigned_as_they_are(self):
        bag = kaputil.Dispatch("KapUtil.CProprieta")
        _native.assign(self.form, "Errore", bag)
        _native.assign(self.form, "Box", kaputil.Nothing)
        self.assertEqual(self.form.Errore, bag)
        self.assertIs(self.form.Box, kaputil.Nothing)

    def test_assigning_what_it_lacks_is_pythons_own_assignment(self):
        _native.assign(self.form, "Nuova", 1)
        self.assertEqual(self.form.Nuova, 1)
        bag = kaputil.Dispatch("KapUtil.CProprieta")
        _native.assign(self.form, "Oggetto", bag)
        self.assertEqual(self.form.Oggetto, bag)

    def test_an_object_decides_itself_what_it_takes(self):
        class Item:
            def __setattr__(self, name, value):
                if name == "Vietato":
                    raise AttributeError(name)
                if value is None:
                    raise ValueError("manca il valore")
                super().__setattr__(name, value)

        item = Item()
        _native.assign(item, "To", "anna")
        self.assertEqual(item.To, "anna")
        self.assertRaisesNumber(438, _native.assign, item, "Vietato", 1)
        with self.assertRaises(ValueError):
            _native.assign(item, "To", None)

    def test_what_takes_no_further_attribute_has_no_such_member(self):
        class Fixed:
            __slots__ = ("To",)

        fixed = Fixed()
        _native.assign(fixed, "To", "anna")
        self.assertEqual(fixed.To, "anna")
        error = self.assertRaisesNumber(438, _native.assign, fixed, "Manca", 1)
        self.assertEqual(error.description, "Fixed has no member Manca")

    def test_reading_what_it_lacks_makes_nothing(self):
        self.assertRaisesNumber(438, kaputil.invoke, self.form, "Manca")
        self.assertNotIn("Manca", vars(self.form))

    def test_what_refuses_an_assignment_raises_its_own_error(self):
        with self.assertRaises(AttributeError):
            _native.assign(self.form, "Height", 1)


class DefaultMembers(ItalianTest):
    def test_an_object_stands_for_its_default_member(self):
        self.assertTrue(kaputil.kapEmpty(TextBox("  ")))
        self.assertEqual(kaputil.KapRound(TextBox(2.6)), 3.0)
        self.assertEqual(kaputil.change_type(TextBox("3,5"), "Double"), 3.5)

    def test_it_may_be_an_object_itself(self):
        self.assertEqual(kaputil.KapRound(TextBox(TextBox(2.6))), 3.0)

    def test_its_name_is_matched_like_any_other(self):
        class Label:
            _default_member_ = "CAPTION"
            Caption = "x"

        self.assertEqual(kaputil.change_type(Label(), "String"), "x")

    def test_a_method_may_be_the_default_member(self):
        class Counter:
            _default_member_ = "Next"

            def Next(self):
                return 7

        self.assertEqual(kaputil.KapRound(Counter()), 7.0)

    def test_an_object_without_one_has_no_value(self):
        self.assertRaisesNumber(13, kaputil.kapEmpty, object())

        class Wrong:
            _default_member_ = "Manca"

        self.assertRaisesNumber(13, kaputil.kapEmpty, Wrong())

    def test_a_value_is_assigned_through_it(self):
        """A property put with arguments is for the default member of the object that the member holds."""

        class Grid:
            _default_member_ = "Cells"

            def __init__(self, fields):
                self.Cells = fields

        rows = kaputil.OpenRecordset("SELECT A, B FROM Prova", table())
        form = Form()
        form.Grid = Grid(rows.Fields)
        bag = kaputil.Dispatch("KapUtil.CErrore")
        form.Errore = bag
        _native.assign_indexed(form, "Grid", ("B",), "nuovo")
        self.assertEqual(rows.Fields("B").Value, "nuovo")
        self.assertRaisesNumber(450, _native.assign_indexed, form, "Caption", ("B",), "x")
        self.assertRaisesNumber(438, _native.assign_indexed, form, "Errore", ("B",), "x")
        self.assertRaisesNumber(438, _native.assign_indexed, form, "Manca", ("B",), "x")
        self.assertNotIn("Manca", vars(form))

    def test_it_names_a_field_for_the_library(self):
        rows = kaputil.OpenRecordset("SELECT 1 AS A, 'x' AS B", connection())
        self.assertEqual(rows.Fields(TextBox("B")).Value, "x")


class References(ItalianTest):
    """Parameters annotated as Ref take arguments by reference."""

    def test_what_the_method_leaves_is_written_back(self):
        class Document:
            def Read(self, Connessione: kaputil.Ref, nome: str, riga: "kaputil.Ref[int]" = None):
                Connessione.value = "aperta"
                riga.value += 1
                nome = "altro"

        first, name, row = kaputil.Ref("chiusa"), kaputil.Ref("nome"), kaputil.Ref(4)
        kaputil.invoke(Document(), "Read", first, name, riga=row)
        self.assertEqual((first.value, name.value, row.value), ("aperta", "nome", 5))

    def test_other_parameters_take_plain_values(self):
        class Document:
            def Read(self, connessione):
                return connessione

        self.assertEqual(kaputil.invoke(Document(), "Read", kaputil.Ref(5)).value, 5)

    def test_what_was_left_before_a_failure_is_written_back(self):
        class Document:
            def Read(self, connessione: kaputil.Ref[str]):
                connessione.value = "aperta"
                raise ValueError("dopo")

        reference = kaputil.Ref("chiusa")
        with self.assertRaises(ValueError):
            kaputil.invoke(Document(), "Read", reference)
        self.assertEqual(reference.value, "aperta")

    def test_what_was_not_assigned_keeps_its_type(self):
        class Document:
            def Read(self, prezzo: kaputil.Ref, righe: kaputil.Ref):
                righe.value.append(3)

        price, rows = kaputil.Ref(kaputil.Variant("Currency", 5)), kaputil.Ref([1, 2])
        kaputil.invoke(Document(), "Read", price, rows)
        self.assertEqual(price.value, kaputil.Variant("Currency", 5))
        self.assertEqual(rows.value, [1, 2, 3])


class Enumeration(ItalianTest):
    def test_what_python_iterates_the_library_enumerates(self):
        class Contacts:
            def __iter__(self):
                return iter(["Anna", None, TextBox("Bruno")])

        names = _native.elements(Contacts())
        self.assertEqual((names[0], names[1], names[2].Text), ("Anna", None, "Bruno"))
        self.assertRaisesNumber(438, _native.elements, TextBox("x"))


class Factories(ItalianTest):
    def test_they_answer_for_their_names_until_they_are_taken_back(self):
        made = TextBox("x")
        kaputil.register("Posta.Programma", lambda: made)
        self.assertIs(kaputil.Dispatch("posta.PROGRAMMA"), made)
        kaputil.unregister("POSTA.programma")
        self.assertRaisesNumber(429, kaputil.Dispatch, "Posta.Programma")

    def test_they_stand_before_the_catalogue(self):
        kaputil.register("KapUtil.CErrore", lambda: TextBox("mio"))
        self.addCleanup(kaputil.unregister, "KapUtil.CErrore")
        self.assertEqual(kaputil.Dispatch("kaputil.cerrore").Text, "mio")

    def test_they_may_give_nothing_or_an_object_of_the_library(self):
        self.addCleanup(kaputil.unregister, "Prova.Uno")
        bag = kaputil.Dispatch("KapUtil.CProprieta")
        for made, expected in ((None, kaputil.Nothing), (kaputil.Nothing, kaputil.Nothing), (bag, bag)):
            kaputil.register("Prova.Uno", lambda made=made: made)
            self.assertEqual(kaputil.Dispatch("Prova.Uno"), expected)

    def test_what_is_no_object_is_refused(self):
        kaputil.register("Prova.Uno", lambda: 5)
        self.addCleanup(kaputil.unregister, "Prova.Uno")
        self.assertRaisesNumber(13, kaputil.Dispatch, "Prova.Uno")

    def test_they_are_functions_with_a_name(self):
        with self.assertRaises(TypeError):
            kaputil.register("Prova.Uno", 5)
        self.assertRaisesNumber(5, kaputil.register, "", Form)

    def test_what_they_raise_reaches_the_caller(self):
        failure = RuntimeError("nessun programma di posta")

        def make():
            raise failure

        kaputil.register("Prova.Uno", make)
        self.addCleanup(kaputil.unregister, "Prova.Uno")
        with self.assertRaises(RuntimeError) as caught:
            kaputil.Dispatch("Prova.Uno")
        self.assertIs(caught.exception, failure)

    def test_they_are_dropped_when_they_are_taken_back(self):
        class Maker:
            def __call__(self):
                return None

        maker = Maker()
        gone = weakref.ref(maker)
        kaputil.register("Prova.Uno", maker)
        del maker
        gc.collect()
        self.assertIsNotNone(gone())
        kaputil.unregister("Prova.Uno")
        gc.collect()
        self.assertIsNone(gone())


if __name__ == "__main__":
    unittest.main()
