"""Connections in `with` statements, and the rows of a recordset."""

import copy
import pickle
import unittest

import kaputil
from support import MEMORY, ItalianTest, connection, table


def values(database):
    """The first column of the table."""
    return [row[0] for row in database.Execute("SELECT A FROM Prova ORDER BY A")]


class Blocks(ItalianTest):
    def setUp(self):
        super().setUp()
        self.database = table()

    def test_of_an_open_connection_are_committed_at_their_end(self):
        with self.database as same:
            self.assertEqual(same, self.database)
            self.database.Execute("DELETE FROM Prova WHERE A = 1")
        self.assertEqual(self.database.State, 1)
        self.assertEqual(self.database.Execute("SELECT @@TRANCOUNT").Fields(0).Value, 0)
        self.assertEqual(values(self.database), [2, 3])

    def test_are_undone_by_an_exception_which_goes_on(self):
        failure = KeyError("x")
        with self.assertRaises(KeyError) as caught, self.database:
            self.database.Execute("DELETE FROM Prova")
            raise failure
        self.assertIs(caught.exception, failure)
        self.assertEqual(self.database.State, 1)
        self.assertEqual(values(self.database), [1, 2, 3])

    def test_are_undone_by_an_error_of_the_database(self):
        with self.assertRaises(kaputil.AutomationError), self.database:
            self.database.Execute("DELETE FROM Prova WHERE A = 1")
            self.database.Execute("INSERT INTO Prova VALUES (2, 'doppio')")
        self.assertEqual(values(self.database), [1, 2, 3])

    def test_follow_one_another(self):
        for number in (4, 5):
            with self.database:
                self.database.Execute(f"INSERT INTO Prova VALUES ({number}, '')")
        self.assertEqual(values(self.database), [1, 2, 3, 4, 5])

    def test_lie_within_one_another(self):
        with self.database:
            self.database.Execute("DELETE FROM Prova WHERE A = 1")
            with self.database:
                self.database.Execute("DELETE FROM Prova WHERE A = 2")
        self.assertEqual(values(self.database), [3])

    def test_let_an_exception_through_when_the_transaction_is_over_already(self):
        with self.assertRaises(KeyError), self.database:
            self.database.Execute("DELETE FROM Prova WHERE A = 1")
            self.database.CommitTrans()
            raise KeyError("x")
        self.assertEqual(values(self.database), [2, 3])

    def test_close_what_they_have_opened(self):
        with kaputil.Dispatch("ADODB.Connection") as opened:
            opened.Open(MEMORY)
            opened.Execute("CREATE TABLE Altra (A int)")
        self.assertEqual(opened.State, 0)
        with self.assertRaises(KeyError), opened:
            opened.Open(MEMORY)
            raise KeyError("x")
        self.assertEqual(opened.State, 0)
        with opened:
            pass
        self.assertEqual(opened.State, 0)


class Rows(ItalianTest):
    def setUp(self):
        super().setUp()
        self.database = table()
        self.rows = kaputil.OpenRecordset("SELECT A, B FROM Prova ORDER BY A", self.database)

    def test_are_iterated_from_the_first_to_the_last_each_time(self):
        self.assertEqual(list(self.rows), [(1, "uno"), (2, "due"), (3, "tre")])
        self.assertIs(self.rows.EOF, True)
        self.assertEqual([number for number, _ in self.rows], [1, 2, 3])

    def test_of_an_empty_recordset_are_none(self):
        self.assertEqual(list(kaputil.OpenRecordset("SELECT A FROM Prova WHERE A > 9", self.database)), [])

    def test_of_a_cursor_that_only_goes_forward_begin_where_it_is(self):
        rows = self.database.Execute("SELECT A FROM Prova ORDER BY A")
        self.assertEqual(next(iter(rows)), (1,))
        rows.MoveNext()
        self.assertEqual(list(rows), [(2,), (3,)])
        self.assertEqual(list(rows), [])

    def test_are_the_current_record_while_they_are_at_hand(self):
        for row in self.rows:
            self.assertEqual(self.rows.Fields("A").Value, row.A)
            self.rows.Fields("B").Value = f"riga {row.A}"
            self.rows.Update()
        self.assertEqual([row.B for row in self.rows], ["riga 1", "riga 2", "riga 3"])

    def test_of_a_filter_are_those_that_it_shows(self):
        self.rows.Filter = "A > 1"
        self.assertEqual([row.A for row in self.rows], [2, 3])

    def test_have_their_values_by_position_and_by_name_in_any_case(self):
        row = next(iter(self.rows))
        self.assertEqual((row[0], row[-1], row["a"], row.b, row[:1], len(row)), (1, "uno", 1, "uno", (1,), 2))
        self.assertEqual(row.keys(), ["A", "B"])
        self.assertEqual(dict(row), {"A": 1, "B": "uno"})
        self.assertEqual(repr(row), "Row(A=1, B='uno')")
        self.assertIsInstance(row, kaputil.Row)
        with self.assertRaises(KeyError):
            row["Manca"]
        with self.assertRaises(AttributeError):
            row.Manca

    def test_of_two_fields_with_one_name_give_the_first(self):
        row = next(iter(self.database.Execute("SELECT 1 AS A, 2 AS A")))
        self.assertEqual((row.A, tuple(row)), (1, (1, 2)))

    def test_are_copied_and_pickled(self):
        row = next(iter(self.rows))
        for again in (copy.copy(row), copy.deepcopy(row), pickle.loads(pickle.dumps(row))):
            self.assertEqual((again, again.A, again.keys()), (row, 1, ["A", "B"]))

    def test_of_a_closed_recordset_raise_that_it_is_closed(self):
        closed = connection().Execute("CREATE TABLE Altra (A int)")
        self.assertRaisesNumber(-2146824584, list, closed)


if __name__ == "__main__":
    unittest.main()
