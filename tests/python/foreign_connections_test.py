"""Connections of another maker: Python objects that the library knows by the names of their members alone."""

import os
import tempfile
import unittest

import kaputil
from support import ItalianTest, connection


class Refusal(Exception):
    """What such a connection raises by itself."""


class OtherConnection:
    """A connection in front of one of the package's own."""

    def __init__(self):
        self.inner = connection()
        self.sent = []
        self.openings = []
        self.CommandTimeout = 9
        self.lost = False

    @property
    def ConnectionString(self):
        return self.inner.ConnectionString

    @ConnectionString.setter
    def ConnectionString(self, value):
        self.inner.ConnectionString = value

    @property
    def State(self):
        return self.inner.State

    @property
    def Errors(self):
        return [] if self.lost else self.inner.Errors

    def Open(self, *arguments):
        self.openings.append("open")
        self.inner.Open(*arguments)

    def Close(self):
        self.openings.append("close")
        self.inner.Close()

    def Execute(self, CommandText, RecordsAffected: kaputil.Ref = None, Options=-1):
        self.sent.append((CommandText, self.CommandTimeout))
        if self.lost:
            raise Refusal("linea caduta")
        return self.inner.Execute(CommandText, RecordsAffected, Options)

    def OpenSchema(self, *arguments):
        return self.inner.OpenSchema(*arguments)

    def BeginTrans(self):
        return self.inner.BeginTrans()

    def CommitTrans(self):
        self.inner.CommitTrans()

    def RollbackTrans(self):
        self.inner.RollbackTrans()


class ForeignTest(ItalianTest):
    def setUp(self):
        super().setUp()
        self.other = OtherConnection()
        self.other.inner.Execute(
            "CREATE TABLE Conti (Codice int PRIMARY KEY, Saldo int CHECK (Saldo >= 0), AggID timestamp)"
            "INSERT INTO Conti (Codice, Saldo) VALUES (1, 10)"
        )

    def value(self, query):
        return self.other.inner.Execute(query).Fields(0).Value


class Scripts(ForeignTest):
    def setUp(self):
        super().setUp()
        self.sql = kaputil.Dispatch("KapUtil.CSQL")
        self.sql.ActiveConnection = self.other

    def test_the_statements_own_message_comes_behind_the_servers(self):
        self.sql.Command("INSERT INTO Conti (Codice, Saldo) VALUES (1, 5)", "Conto doppio")
        self.assertIs(self.sql.Execute(), False)
        messages = self.sql.Errore.MsgToString()
        self.assertLess(0, messages.index("PRIMARY KEY"))
        self.assertLess(messages.index("PRIMARY KEY"), messages.index("Conto doppio"))

    def test_what_the_object_raises_itself_is_told(self):
        self.other.lost = True
        self.sql.Command("DELETE Conti")
        self.assertIs(self.sql.Execute(), False)
        self.assertIn("linea caduta", self.sql.Errore.MsgToString())

    def test_scripts_run_without_limit_and_the_limit_stays(self):
        self.sql.Command("UPDATE Conti SET Saldo = 11")
        self.assertIs(self.sql.Execute(), True)
        self.assertEqual([timeout for _, timeout in self.other.sent], [0])
        self.assertEqual(self.other.CommandTimeout, 9)
        self.assertEqual(self.value("SELECT Saldo FROM Conti"), 11)

    def test_the_object_that_was_set_is_given_back(self):
        self.assertIs(self.sql.ActiveConnection, self.other)

    def test_that_very_connection_is_reopened_and_closed_at_the_end(self):
        with tempfile.TemporaryDirectory() as folder:
            text = "Provider=KapLocal;Data Source=" + os.path.join(folder, "altro.db")
            self.sql.ConnectionString = text
            self.assertEqual(self.other.openings, ["close", "open"])
            self.assertEqual((self.sql.ConnectionString, self.other.ConnectionString), (text, text))
            self.assertIs(self.sql.ActiveConnection, self.other)
            del self.sql
            self.assertEqual(self.other.State, 0)

    def test_rows_are_moved_from_table_to_table(self):
        self.other.inner.Execute(
            "CREATE TABLE #Nuovi (Saldo int, Codice int) INSERT INTO #Nuovi VALUES (5, 2), (6, 3)"
        )
        self.sql.Parametri.Scrivi("FROM", "#Nuovi")
        self.sql.Parametri.Scrivi("TO", "Conti")
        self.assertIn("INSERT Conti", self.sql.AddTmp())
        self.assertIs(self.sql.Execute(), True)
        self.assertEqual(self.value("SELECT SUM(Saldo) FROM Conti"), 21)


class Configuration(ForeignTest):
    def test_the_object_that_was_set_is_given_back(self):
        root = kaputil.Dispatch("KapUtil.CFG_Applicazioni")
        root.ActiveConnection = self.other
        self.assertIs(root.ActiveConnection, self.other)

    def test_it_is_loaded_and_written(self):
        self.other.inner.Execute(
            "CREATE TABLE KAP_CFG (Gruppo varchar(9), Applicazione varchar(9), Procedura varchar(9),"
            " Modulo varchar(9), Campo varchar(9), Valore varchar(9), Flag varchar(9))"
            "INSERT INTO KAP_CFG VALUES ('U', 'A', 'P', 'M', 'Copie', '2', '0')"
        )
        root = kaputil.Dispatch("KapUtil.CFG_Applicazioni")
        root.Gruppo = "U"
        root.ActiveConnection = self.other
        field = root.Add("A").Procedure.Add("P").Moduli.Add("M").Campi.Add("Copie")
        root.CaricaCfgPersonalizzati()
        self.assertEqual(field.Valore, "2")
        field.Valore = "5"
        field.Update()
        self.assertEqual(self.value("SELECT Valore FROM KAP_CFG"), "5")


class Records(ForeignTest):
    def test_they_are_read_updated_and_deleted(self):
        query, record = "SELECT * FROM Conti WHERE Codice = 1", kaputil.Ref("")
        self.assertIs(kaputil.DB_Read(self.other, query, record), True)
        changed = record.value.replace("<SALDO>10</SALDO>", "<SALDO>12</SALDO>")
        self.assertIs(kaputil.DB_Update(self.other, query, changed), True)
        self.assertEqual(self.value("SELECT Saldo FROM Conti"), 12)
        kaputil.DB_Read(self.other, query, record)
        self.assertIs(kaputil.DB_Delete(self.other, query, record), True)
        self.assertEqual(self.value("SELECT COUNT(*) FROM Conti"), 0)

    def test_recordsets_and_commands_give_the_object_back(self):
        rows = kaputil.OpenRecordset("SELECT * FROM Conti", self.other, CloseConnection=False)
        self.assertEqual(rows.RecordCount, 1)
        self.assertIs(rows.ActiveConnection, self.other)
        command = kaputil.Dispatch("ADODB.Command")
        command.ActiveConnection = self.other
        self.assertIs(command.ActiveConnection, self.other)

    def test_line_numbers_are_counted(self):
        self.assertEqual(kaputil.Riga_Prog(self.other, "SELECT MAX(Codice) FROM Conti", 10), 10)

    def test_a_reference_keeps_the_object(self):
        reference = kaputil.Ref(self.other)
        kaputil.ControllaConnessione(reference)
        self.assertIs(reference.value, self.other)

    def test_exceptions_of_the_object_reach_the_caller_as_they_are(self):
        self.other.lost = True
        command = kaputil.Dispatch("ADODB.Command")
        command.ActiveConnection = self.other
        command.CommandText = "SELECT 1"
        with self.assertRaisesRegex(Refusal, "linea caduta"):
            command.Execute()


if __name__ == "__main__":
    unittest.main()
