"""Library objects in Python, and Python objects in the library."""

import os
import tempfile
import threading
import traceback
import unittest

import kaputil

DATABASE = "Provider=KapLocal;Data Source=:memory:"


def connection():
    opened = kaputil.Dispatch("ADODB.Connection")
    opened.Open(DATABASE)
    return opened


class LibraryObjects(unittest.TestCase):
    def test_members_are_called_in_any_case_with_positional_or_named_arguments(self):
        bag = kaputil.Dispatch("KapUtil.CProprieta")
        bag.Scrivi("Codice", 12)
        self.assertEqual(bag.leggi("codice"), "12")
        self.assertEqual(bag.Leggi(snomeproprieta="Codice"), "12")
        self.assertEqual(bag.Count(), 1)
        self.assertIsNone(bag.Leggi("Manca"))

    def test_the_predeclared_members_are_the_packages_own(self):
        self.assertEqual(kaputil.KapRound(2.675, 2), 2.68)
        self.assertEqual(kaputil.nomemese(8, "FRA"), "Août")
        self.assertIn("KapRound", dir(kaputil))

    def test_properties_are_attributes(self):
        error = kaputil.Errore
        error.Numero = 5
        self.assertEqual(error.Numero, "5")

    def test_by_reference_arguments_come_back(self):
        cursor = kaputil.Ref(-1)
        rows = kaputil.OpenRecordset("SELECT 1 AS A, 'x' AS B", connection(), cursor)
        self.assertEqual(cursor.value, 3)
        self.assertEqual(rows.RecordCount, 1)
        text = kaputil.Ref("")
        kaputil.kapControllaData("251203", sFormat=text)
        self.assertEqual(text.value, "dd/mm/yyyy")

    def test_default_members_and_collections(self):
        rows = kaputil.OpenRecordset("SELECT 1 AS A, 'x' AS B", connection())
        self.assertEqual(rows.Fields("B").Value, "x")
        self.assertEqual(rows.Fields("A")(), 1)
        self.assertEqual([field.Name for field in rows.Fields], ["A", "B"])
        self.assertEqual(rows.Fields.Count, 2)
        with self.assertRaises(kaputil.AutomationError):
            iter(rows)

    def test_errors_have_number_source_and_description(self):
        with self.assertRaises(kaputil.AutomationError) as caught:
            kaputil.ConvertiData("nessuna")
        self.assertEqual((caught.exception.number, caught.exception.description), (13, "Type mismatch"))
        bag = kaputil.Dispatch("KapUtil.CProprieta")
        with self.assertRaises(AttributeError) as caught:
            bag.Manca(1)
        self.assertEqual(caught.exception.number, 438)
        self.assertFalse(hasattr(bag, "Manca"))
        with self.assertRaises(kaputil.AutomationError) as caught:
            kaputil.Dispatch("KapUtil.Manca")
        self.assertEqual(caught.exception.number, 429)

    def test_objects_describe_themselves(self):
        bag = kaputil.Dispatch("KapUtil.CProprieta")
        self.assertEqual(repr(bag), "<kaputil CProprieta>")
        self.assertEqual(type(bag).__name__, "CProprieta")
        self.assertIn("Scrivi", dir(bag))
        self.assertIn("Leggi(sNomeProprieta='DEFAULT') -> Variant", bag.Leggi.__doc__)
        self.assertIn("A bag of named values", type(bag).__doc__)

    def test_a_field_outlives_its_recordset_and_connection(self):
        field = kaputil.OpenRecordset("SELECT 'x' AS B", connection()).Fields("B")
        self.assertEqual(field.Value, "x")

    def test_another_thread_is_refused(self):
        bag = kaputil.Dispatch("KapUtil.CProprieta")
        raised = []

        def use():
            try:
                bag.Count()
            except RuntimeError as error:
                raised.append(str(error))

        thread = threading.Thread(target=use)
        thread.start()
        thread.join()
        self.assertEqual(len(raised), 1)
        self.assertIn("thread", raised[0])

    def test_exact_results_tell_their_type(self):
        result = kaputil.invoke(kaputil.Dispatch("KapUtil.StdFunctions"), "KapRound", 2.6)
        self.assertEqual((result.type, result.value), ("Double", 3.0))

    def test_message_boxes_go_to_the_chosen_file(self):
        database = connection()
        database.Execute("CREATE TABLE vtx_TabVal (Codice varchar(10), Dec_Imp smallint)")
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "messaggi.log")
            kaputil.message_log(path)
            self.addCleanup(kaputil.message_log, None)
            self.assertIs(kaputil.CalcVal(database, "XXX", 10.0, 1.0), kaputil.Empty)
            with open(path, encoding="utf-8") as log:
                self.assertIn("Valuta XXX non trovata!", log.read())


class TextBox:
    _default_member_ = "Text"

    def __init__(self, text):
        self.Text = text


class Broken:
    _default_member_ = "Text"

    @property
    def Text(self):
        raise ValueError("nessun testo")


class PythonObjects(unittest.TestCase):
    def test_a_python_object_stands_for_its_default_member(self):
        self.assertTrue(kaputil.kapEmpty(TextBox("  ")))
        self.assertEqual(kaputil.KapRound(TextBox(2.6)), 3.0)

    def test_an_exception_reaches_the_caller_with_its_traceback(self):
        try:
            kaputil.kapEmpty(Broken())
            self.fail("nothing was raised")
        except ValueError as error:
            self.assertEqual(str(error), "nessun testo")
            names = [frame.name for frame in traceback.extract_tb(error.__traceback__)]
        self.assertIn("Text", names)

    def test_factories_answer_for_their_names_until_they_are_taken_back(self):
        made = TextBox("x")
        kaputil.register("Posta.Programma", lambda: made)
        self.assertIs(kaputil.Dispatch("posta.PROGRAMMA"), made)
        kaputil.unregister("POSTA.programma")
        with self.assertRaises(kaputil.AutomationError):
            kaputil.Dispatch("Posta.Programma")

    def test_python_objects_are_let_go(self):
        import gc
        import weakref

        box = TextBox("x")
        gone = weakref.ref(box)
        self.assertFalse(kaputil.kapEmpty(box))
        del box
        gc.collect()
        self.assertIsNone(gone())


if __name__ == "__main__":
    unittest.main()
