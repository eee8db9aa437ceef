"""Library objects in Python: members, arguments, collections, errors."""

import os
import tempfile
import unittest
import unittest.mock

import kaputil
from kaputil import _native
from support import ItalianTest, connection, table


class Members(ItalianTest):
    def test_objects_are_made_by_their_names_in_any_case(self):
        self.assertEqual(type(kaputil.Dispatch("kaputil.CPROPRIETA")).__name__, "CProprieta")
        self.assertEqual(type(kaputil.Dispatch("adodb.connection")).__name__, "Connection")

    def test_names_that_stand_for_nothing_and_classes_that_cannot_be_made_are_refused(self):
        for name in ("KapUtil.Manca", "KapUtil.CConstant", "CProprieta", ""):
            self.assertRaisesNumber(429, kaputil.Dispatch, name)

    def test_members_are_found_in_any_case(self):
        bag = kaputil.Dispatch("KapUtil.CProprieta")
        bag.SCRIVI("Codice", 12)
        self.assertEqual(bag.leggi("codice"), "12")

    def test_arguments_are_positional_or_named_in_any_case(self):
        bag = kaputil.Dispatch("KapUtil.CProprieta")
        bag.Scrivi("Codice", sValore=12)
        bag.Scrivi(SVALORE="x", sNomeProprieta="Nota")
        self.assertEqual(bag.Leggi(snomeproprieta="Codice"), "12")
        self.assertEqual(bag.Leggi("Nota"), "x")
        self.assertRaisesNumber(448, bag.Leggi, nome="Codice")
        self.assertRaisesNumber(449, bag.Scrivi, "Codice")
        self.assertRaisesNumber(450, bag.Leggi, "Codice", "Nota")

    def test_methods_without_arguments_are_called_and_properties_are_attributes(self):
        bag = kaputil.Dispatch("KapUtil.CProprieta")
        self.assertEqual(bag.Count(), 0)
        rows = kaputil.OpenRecordset("SELECT 1 AS A, 'x' AS B", connection())
        self.assertEqual(rows.Fields.Count, 2)
        self.assertIs(rows.EOF, False)

    def test_members_taken_from_a_class_are_called_of_its_objects_only(self):
        bag = kaputil.Dispatch("KapUtil.CProprieta")
        bag.Scrivi("Codice", 12)
        read = type(bag).Leggi
        self.assertEqual(read(bag, "Codice"), "12")
        self.assertEqual(read(bag, snomeproprieta="codice"), "12")
        for target in ((), (None,), (5,), (kaputil.Dispatch("KapUtil.CErrore"),), (type(bag).__new__(type(bag)),)):
            with self.assertRaisesRegex(TypeError, "CProprieta.Leggi is called of a CProprieta"):
                read(*target)

    def test_a_member_outlives_the_name_of_its_object(self):
        read = kaputil.Dispatch("KapUtil.CProprieta").Leggi
        self.assertIsNone(read("Codice"))
        self.assertEqual(read.__name__, "Leggi")
        self.assertIn("CProprieta.Leggi", repr(read.__func__))

    def test_texts_of_every_width_go_in_and_come_out(self):
        bag = kaputil.Dispatch("KapUtil.CProprieta")
        for text in ("", "x", "perché", "\x80\xff", "中文", "a中é", "😀", "a😀é中", "\ud800", "\x00a\x00"):
            bag.Scrivi("Testo", text)
            self.assertEqual(bag.Leggi("Testo"), text)

    def test_properties_are_assigned_in_any_case(self):
        error = kaputil.Dispatch("KapUtil.CErrore")
        error.numero = 5
        self.assertEqual(error.Numero, "5")

    def test_properties_are_assigned_through_their_class_too(self):
        error = kaputil.Dispatch("KapUtil.CErrore")
        type(error).Numero.__set__(error, 5)
        self.assertEqual(error.Numero, "5")

    def test_what_cannot_be_assigned_raises_that_there_is_no_such_member(self):
        rows = kaputil.OpenRecordset("SELECT 1 AS A", connection())
        self.assertRaisesNumber(438, setattr, rows, "EOF", True)
        self.assertRaisesNumber(438, setattr, rows, "MoveFirst", 1)
        error = self.assertRaisesNumber(438, setattr, rows, "Manca", 1)
        self.assertEqual(error.description, "Recordset has no member Manca")

    def test_members_without_a_value_give_none(self):
        self.assertIsNone(kaputil.Dispatch("KapUtil.CErrore").Clear())
        self.assertIs(kaputil.Dispatch("KapUtil.IClassi").Read(1), kaputil.Empty)

    def test_objects_are_members_values(self):
        database = connection()
        rows = kaputil.OpenRecordset("SELECT 1 AS A", database, CloseConnection=False)
        self.assertEqual(rows.ActiveConnection, database)
        rows.ActiveConnection = None
        self.assertIs(rows.ActiveConnection, kaputil.Nothing)

    def test_the_same_object_is_equal_however_it_was_reached(self):
        rows = kaputil.OpenRecordset("SELECT 1 AS A", connection())
        self.assertEqual(rows.Fields("A"), rows.Fields(0))
        self.assertNotEqual(rows.Fields("A"), "A")
        self.assertEqual(len({rows.Fields("A"), rows.Fields(0)}), 1)


class GlobalMembers(ItalianTest):
    def test_they_are_the_packages_own_in_any_case(self):
        self.assertEqual(kaputil.KapRound(2.675, 2), 2.68)
        self.assertEqual(kaputil.nomemese(8, "FRA"), "Août")

    def test_they_give_what_a_created_instance_gives(self):
        created = kaputil.Dispatch("KapUtil.StdFunctions")
        self.assertEqual(kaputil.kapApice("l'Aquila"), created.kapApice("l'Aquila"))

    def test_their_properties_are_read_and_assigned(self):
        before = kaputil.Errore
        self.addCleanup(setattr, kaputil, "Errore", before)
        replaced = kaputil.Dispatch("KapUtil.CErrore")
        kaputil.errore = replaced
        self.assertEqual(kaputil.Errore, replaced)
        self.assertNotEqual(kaputil.Errore, before)

    def test_other_names_are_missing(self):
        self.assertFalse(hasattr(kaputil, "Manca"))
        with self.assertRaises(ImportError):
            from kaputil import Manca  # noqa: F401

    def test_the_packages_own_names_can_be_replaced_for_a_test(self):
        with unittest.mock.patch.object(kaputil, "KapRound", return_value=1):
            self.assertEqual(kaputil.KapRound(9), 1)
        self.assertEqual(kaputil.KapRound(9), 9)


class ByReference(ItalianTest):
    def test_what_the_member_chose_comes_back(self):
        cursor = kaputil.Ref(-1)
        lock = kaputil.Ref(-1)
        kaputil.OpenRecordset("SELECT 1 AS A", connection(), cursor, LockType=lock)
        self.assertEqual((cursor.value, lock.value), (3, 3))

    def test_a_plain_value_is_taken_too(self):
        self.assertEqual(kaputil.kapControllaData("251203", "dd/mm/yyyy"), "25/12/2003")

    def test_named_arguments_come_back_in_any_case(self):
        text = kaputil.Ref("")
        kaputil.kapControllaData("251203", SFORMAT=text)
        self.assertEqual(text.value, "dd/mm/yyyy")

    def test_an_empty_holder_is_null(self):
        record = kaputil.Ref()
        database = connection()
        self.assertTrue(kaputil.DB_Read(database, "SELECT 12 AS Codice", record))
        self.assertEqual(record.value, "<CODICE>12</CODICE>")
        self.assertEqual(repr(record), "kaputil.Ref('<CODICE>12</CODICE>')")

    def test_an_argument_passed_by_value_stays_as_it_is(self):
        number = kaputil.Ref(2**40)
        kaputil.KapRound(number)
        self.assertIs(type(number.value), int)

    def test_what_the_member_had_chosen_stays_when_it_raises(self):
        options = [kaputil.Ref(-1) for _ in range(4)]
        cursor, lock, command, location = options
        self.assertRaisesNumber(-2147217865, kaputil.OpenRecordset, "SELECT * FROM Manca", connection(), cursor, lock, command,
                                CursorLocation=location)
        self.assertEqual([one.value for one in options], [3, 3, 1, 3])

    def test_what_the_member_leaves_alone_keeps_its_type(self):
        key = kaputil.Ref(5)
        kaputil.Dispatch("KapUtil.IClassi").PgUpDown(key, None)
        self.assertEqual(repr(key), "kaputil.Ref(5)")
        holder = kaputil.Variant("String", "SELECT MAX(A) FROM Prova")
        query = kaputil.Ref(holder)
        self.assertEqual(kaputil.Riga_Prog(table(), query), 4)
        self.assertIs(query.value, holder)

    def test_an_object_that_stands_for_a_text_stays_the_object(self):
        class Box:
            _default_member_ = "Text"
            Text = "SELECT MAX(A) FROM Prova"

        box = Box()
        query = kaputil.Ref(box)
        self.assertEqual(kaputil.Riga_Prog(table(), query), 4)
        self.assertIs(query.value, box)

    def test_a_connection_string_becomes_the_connection(self):
        opened = kaputil.Ref("Provider=KapLocal;Data Source=:memory:")
        kaputil.ControllaConnessione(opened)
        self.assertEqual(type(opened.value).__name__, "Connection")
        self.assertEqual(opened.value.State, 1)


class DefaultMembers(ItalianTest):
    def test_calling_an_object_uses_its_default_member(self):
        rows = kaputil.OpenRecordset("SELECT 1 AS A, 'x' AS B", connection())
        self.assertEqual(rows.Fields("B").Value, "x")
        self.assertEqual(rows.Fields(Index=1).Value, "x")
        self.assertEqual(rows.Fields("A")(), 1)

    def test_arguments_go_on_to_the_default_member_of_what_the_default_member_gives(self):
        rows = kaputil.OpenRecordset("SELECT 1 AS A, 'x' AS B", connection())
        self.assertEqual(rows("B").Value, "x")

    def test_a_class_without_one_cannot_be_called(self):
        self.assertRaisesNumber(438, kaputil.Dispatch("KapUtil.CProprieta"))

    def test_an_index_is_an_argument_of_the_default_member(self):
        rows = kaputil.OpenRecordset("SELECT A, B FROM Prova", table())
        self.assertEqual(rows["B"], rows("B"))
        self.assertEqual(rows.Fields[0].Value, 1)
        self.assertRaisesNumber(438, lambda: kaputil.Dispatch("KapUtil.CProprieta")["A"])

    def test_a_value_is_assigned_through_an_index(self):
        rows = kaputil.OpenRecordset("SELECT A, B FROM Prova", table())
        rows["B"] = "nuovo"
        self.assertEqual(rows.Fields("B").Value, "nuovo")
        rows.Fields["b"] = None
        self.assertIsNone(rows.Fields("B").Value)
        _native.assign_indexed(rows.Fields, "Item", ("B",), "terzo")
        self.assertEqual(rows.Fields("B").Value, "terzo")
        rows.Update()

    def test_what_has_no_object_behind_its_default_member_takes_no_value(self):
        error = kaputil.Dispatch("KapUtil.CErrore")
        with self.assertRaises(kaputil.AutomationError):
            error["Numero"] = 5


class Enumerations(ItalianTest):
    def test_their_constants_are_the_packages_own(self):
        self.assertEqual((kaputil.kaHBarra, kaputil.adUseClient, kaputil.CursorLocationEnum.adUseServer), (270, 3, 2))
        rows = kaputil.Dispatch("ADODB.Recordset")
        rows.CursorLocation = kaputil.adUseClient
        self.assertEqual(rows.CursorLocation, kaputil.adUseClient)


class Collections(ItalianTest):
    def test_fields_are_enumerated_in_their_order(self):
        rows = kaputil.OpenRecordset("SELECT 1 AS A, 'x' AS B, NULL AS C", connection())
        self.assertEqual([field.Name for field in rows.Fields], ["A", "B", "C"])
        self.assertEqual([(field.Name, field.Value) for field in rows.Fields][2], ("C", None))

    def test_what_is_no_collection_cannot_be_enumerated(self):
        self.assertRaisesNumber(438, iter, kaputil.Dispatch("KapUtil.CProprieta"))


class Errors(ItalianTest):
    def test_they_have_number_source_and_description(self):
        error = self.assertRaisesNumber(13, kaputil.ConvertiData, "nessuna")
        self.assertEqual((error.description, error.source), ("Type mismatch", ""))
        self.assertEqual(str(error), "13: Type mismatch")

    def test_those_of_the_database_keep_their_texts(self):
        error = self.assertRaisesNumber(-2147217865, connection().Execute, "SELECT * FROM Manca")
        self.assertEqual(error.description, "Invalid object name 'Manca'.")
        self.assertNotEqual(error.source, "")

    def test_a_missing_member_is_a_missing_attribute_too(self):
        bag = kaputil.Dispatch("KapUtil.CProprieta")
        self.assertFalse(hasattr(bag, "Manca"))
        with self.assertRaises(AttributeError) as caught:
            bag.Manca(1)
        self.assertIsInstance(caught.exception, kaputil.AutomationError)
        self.assertEqual(caught.exception.number, 438)

    def test_they_are_pickled_with_their_parts(self):
        import pickle

        error = pickle.loads(pickle.dumps(kaputil.AutomationError(5, "testo", "origine")))
        self.assertEqual((error.number, error.description, error.source), (5, "testo", "origine"))


class Invoke(ItalianTest):
    def test_results_tell_their_exact_type(self):
        functions = kaputil.Dispatch("KapUtil.StdFunctions")
        self.assertEqual(kaputil.invoke(functions, "KapRound", 2.6), kaputil.Variant("Double", 3))
        self.assertEqual(kaputil.invoke(functions, "nomemese", nMese=8, sLingua="ITA").value, "Agosto")
        rows = kaputil.OpenRecordset("SELECT 1 AS A", connection())
        self.assertEqual(kaputil.invoke(rows, "RecordCount"), kaputil.Variant("Long", 1))

    def test_a_member_without_a_value_gives_empty(self):
        bag = kaputil.Dispatch("KapUtil.CProprieta")
        self.assertEqual(kaputil.invoke(bag, "Scrivi", "A", 1).type, "Empty")

    def test_references_come_back(self):
        text = kaputil.Ref("")
        functions = kaputil.Dispatch("KapUtil.StdFunctions")
        kaputil.invoke(functions, "kapControllaData", "251203", text)
        self.assertEqual(text.value, "dd/mm/yyyy")

    def test_targets_are_objects(self):
        with self.assertRaises(TypeError):
            kaputil.invoke("testo", "Leggi")
        self.assertRaisesNumber(91, kaputil.invoke, kaputil.Nothing, "Leggi")
        self.assertRaisesNumber(438, kaputil.invoke, kaputil.Dispatch("KapUtil.CErrore"), "Manca")


class MessageLog(ItalianTest):
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


if __name__ == "__main__":
    unittest.main()
