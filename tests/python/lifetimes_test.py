"""How long objects live on both sides of the border."""

import gc
import subprocess
import sys
import unittest
import weakref

import kaputil
from support import ItalianTest, connection


class TextBox:
    _default_member_ = "Text"

    def __init__(self, text):
        self.Text = text


class LibraryObjects(ItalianTest):
    def test_a_field_outlives_its_recordset_and_connection(self):
        field = kaputil.OpenRecordset("SELECT 'x' AS B", connection()).Fields("B")
        gc.collect()
        self.assertEqual(field.Value, "x")

    def test_a_recordset_keeps_its_connection_open(self):
        database = connection()
        database.Execute("CREATE TABLE T (A int PRIMARY KEY)")
        rows = kaputil.OpenRecordset("SELECT A FROM T", database, CloseConnection=False)
        del database
        gc.collect()
        rows.AddNew("A", 5)
        rows.Update()
        self.assertEqual(rows.Fields("A").Value, 5)

    def test_a_method_outlives_the_name_of_its_object(self):
        bag = kaputil.Dispatch("KapUtil.CProprieta")
        bag.Scrivi("A", 1)
        read = bag.Leggi
        del bag
        gc.collect()
        self.assertEqual(read("A"), "1")

    def test_an_element_may_be_kept_while_its_collection_is_enumerated_away(self):
        fields = list(kaputil.OpenRecordset("SELECT 1 AS A, 2 AS B", connection()).Fields)
        gc.collect()
        self.assertEqual([field.Value for field in fields], [1, 2])

    def test_a_connection_is_closed_with_its_last_holder(self):
        import os
        import tempfile

        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "azienda.db")
            database = connection(f"Provider=KapLocal;Data Source={path}")
            database.Execute("CREATE TABLE T (A int)")
            rows = kaputil.OpenRecordset("SELECT A FROM T", database, CloseConnection=False)
            del database, rows
            self.assertEqual(os.listdir(folder), ["azienda.db"])


class PythonObjects(ItalianTest):
    def test_they_are_let_go_after_a_call(self):
        box = TextBox("x")
        gone = weakref.ref(box)
        self.assertFalse(kaputil.kapEmpty(box))
        del box
        self.assertIsNone(gone())

    def test_they_are_let_go_after_a_call_that_failed(self):
        box = TextBox("nessuna data")
        gone = weakref.ref(box)
        self.assertRaisesNumber(13, kaputil.ConvertiData, box)
        del box
        gc.collect()
        self.assertIsNone(gone())

    def test_the_library_keeps_those_that_it_holds(self):
        rows = kaputil.Dispatch("ADODB.Recordset")
        box = TextBox("SELECT 1 AS A")
        gone = weakref.ref(box)
        rows.Source = box
        del box
        gc.collect()
        self.assertEqual(rows.Source.Text, "SELECT 1 AS A")
        rows.Source = ""
        self.assertIsNone(gone())

    def test_they_go_with_the_object_that_held_them(self):
        rows = kaputil.Dispatch("ADODB.Recordset")
        box = TextBox("SELECT 1 AS A")
        gone = weakref.ref(box)
        rows.Source = box
        del box, rows
        self.assertIsNone(gone())


class Cycles(ItalianTest):
    def test_a_form_that_holds_library_objects_and_itself_is_collected(self):
        form = TextBox("x")
        form.itself = form
        form.rows = kaputil.OpenRecordset("SELECT 1 AS A", connection())
        form.read = form.rows.MoveFirst
        gone = weakref.ref(form)
        del form
        gc.collect()
        self.assertIsNone(gone())

    def test_a_cycle_through_a_library_object_is_not_seen_until_it_is_broken(self):
        # The collector does not look into the library: a form that holds a recordset that holds the form stays.
        form = TextBox("SELECT 1 AS A")
        form.rows = kaputil.Dispatch("ADODB.Recordset")
        form.rows.Source = form
        gone = weakref.ref(form)
        del form
        gc.collect()
        self.assertIsNotNone(gone())
        gone().rows.Source = ""
        gc.collect()
        self.assertIsNone(gone())


class TheEnd(ItalianTest):
    def run_to_the_end(self, program):
        done = subprocess.run([sys.executable, "-c", program], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        self.assertEqual((done.returncode, done.stdout), (0, ""))

    def test_of_the_interpreter_is_quiet_with_objects_of_every_kind_alive(self):
        self.run_to_the_end("""if True:
            import kaputil
            class Form: pass
            form = Form()
            rows = kaputil.Dispatch("ADODB.Recordset")
            rows.Source = form
            form.rows = rows
            held = kaputil.Variant("Object", form)
            kaputil.register("Prova.Uno", Form)
            kaputil.Errore.Numero = 5
            """)

    def test_of_a_thread_is_quiet_too(self):
        self.run_to_the_end("""if True:
            import threading, kaputil
            class Form: pass
            def work():
                rows = kaputil.Dispatch("ADODB.Recordset")
                rows.Source = Form()
                kaputil.Errore.Numero = 5
                kept.append(rows)
            kept = []
            thread = threading.Thread(target=work)
            thread.start()
            thread.join()
            """)


if __name__ == "__main__":
    unittest.main()
