"""Databases through the interface of DB-API 2.0: every statement of PEP 249 about it."""

import datetime
import time
import unittest
from decimal import Decimal

import kaputil
from kaputil import dbapi
from support import MEMORY, ItalianTest

try:
    import pandas
except ImportError:
    pandas = None


class DatabaseTest(ItalianTest):
    def setUp(self):
        super().setUp()
        self.database = dbapi.connect(MEMORY)
        self.addCleanup(self.database.close)
        self.cursor = self.database.cursor()
        self.cursor.execute("CREATE TABLE Birre (Nome varchar(20), Gradi decimal(4,1), Dal date)")
        self.database.commit()

    def fill(self, count=3):
        self.cursor.executemany("INSERT INTO Birre VALUES (?, ?, ?)",
                                [(f"birra {i}", Decimal(i) / 2, datetime.date(2004, 2, 1 + i % 28)) for i in range(count)])
        self.database.commit()


class Module(ItalianTest):
    def test_says_which_interface_it_has(self):
        self.assertEqual((dbapi.apilevel, dbapi.threadsafety, dbapi.paramstyle), ("2.0", 1, "qmark"))

    def test_has_the_tree_of_exceptions(self):
        self.assertTrue(issubclass(dbapi.Warning, Exception) and issubclass(dbapi.Error, Exception))
        for kind in (dbapi.InterfaceError, dbapi.DatabaseError):
            self.assertTrue(issubclass(kind, dbapi.Error))
        for name in ("DataError", "OperationalError", "IntegrityError", "InternalError", "ProgrammingError", "NotSupportedError"):
            self.assertTrue(issubclass(getattr(dbapi, name), dbapi.DatabaseError), name)
            self.assertIs(getattr(dbapi.Connection, name), getattr(dbapi, name))

    def test_has_the_constructors_and_types(self):
        self.assertEqual(dbapi.Date(2004, 2, 29), datetime.date(2004, 2, 29))
        self.assertEqual(dbapi.Time(1, 2, 3), datetime.time(1, 2, 3))
        self.assertEqual(dbapi.Timestamp(2004, 2, 29, 1, 2, 3), datetime.datetime(2004, 2, 29, 1, 2, 3))
        ticks = time.mktime((2004, 2, 29, 13, 45, 30, 0, 0, -1))
        self.assertEqual(dbapi.DateFromTicks(ticks), dbapi.Date(2004, 2, 29))
        self.assertEqual(dbapi.TimeFromTicks(ticks), dbapi.Time(13, 45, 30))
        self.assertEqual(dbapi.TimestampFromTicks(ticks), dbapi.Timestamp(2004, 2, 29, 13, 45, 30))
        self.assertEqual(dbapi.Binary(b"\x00x"), b"\x00x")
        self.assertEqual(dbapi.STRING, kaputil.adVarChar)
        self.assertNotEqual(dbapi.STRING, kaputil.adInteger)
        self.assertEqual((dbapi.NUMBER, dbapi.DATETIME), (kaputil.adNumeric, kaputil.adDBTimeStamp))
        self.assertEqual((dbapi.BINARY, hash(dbapi.ROWID)), (kaputil.adVarBinary, hash(dbapi.ROWID)))

    def test_raises_its_own_error_for_a_database_that_cannot_be_opened(self):
        with self.assertRaises(dbapi.InterfaceError) as caught:
            dbapi.connect("Provider=Nessuno")
        self.assertEqual(caught.exception.number, -2146824582)


class Cursors(DatabaseTest):
    def test_tell_their_columns(self):
        self.assertIsNone(self.database.cursor().description)
        self.cursor.execute("SELECT Nome, Gradi, Dal, 1 AS Uno FROM Birre")
        names = [column[0] for column in self.cursor.description]
        self.assertEqual(names, ["Nome", "Gradi", "Dal", "Uno"])
        self.assertTrue(all(len(column) == 7 for column in self.cursor.description))
        kinds = [column[1] for column in self.cursor.description]
        self.assertEqual([dbapi.STRING, dbapi.NUMBER, dbapi.DATETIME, dbapi.NUMBER], kinds)
        self.assertEqual(self.cursor.description[1][4:6], (4, 1))
        self.cursor.execute("DELETE FROM Birre")
        self.assertIsNone(self.cursor.description)

    def test_tell_how_many_rows_were_written(self):
        self.assertEqual(self.database.cursor().rowcount, -1)
        self.fill(5)
        self.assertEqual(self.cursor.rowcount, 5)
        self.cursor.execute("UPDATE Birre SET Gradi = 0 WHERE Gradi > ?", [1])
        self.assertEqual(self.cursor.rowcount, 2)
        self.cursor.execute("SELECT * FROM Birre")
        self.assertEqual(self.cursor.rowcount, -1)

    def test_give_rows_one_by_one_some_and_all(self):
        self.fill(6)
        self.cursor.execute("SELECT Nome FROM Birre ORDER BY Nome")
        self.assertEqual(self.cursor.fetchone(), ("birra 0",))
        self.assertEqual(self.cursor.fetchmany(), [("birra 1",)])
        self.assertEqual(self.cursor.fetchmany(2), [("birra 2",), ("birra 3",)])
        self.assertEqual(self.cursor.fetchall(), [("birra 4",), ("birra 5",)])
        self.assertEqual((self.cursor.fetchone(), self.cursor.fetchmany(3), self.cursor.fetchall()), (None, [], []))
        self.cursor.arraysize = 4
        self.cursor.execute("SELECT Nome FROM Birre")
        self.assertEqual([len(self.cursor.fetchmany()) for _ in range(3)], [4, 2, 0])

    def test_are_iterated(self):
        self.fill(700)
        self.cursor.execute("SELECT Nome, Gradi FROM Birre ORDER BY Gradi")
        rows = list(self.cursor)
        self.assertEqual((len(rows), rows[0], rows[-1]), (700, ("birra 0", Decimal(0)), ("birra 699", Decimal("349.5"))))

    def test_of_no_rows_give_none(self):
        self.cursor.execute("SELECT * FROM Birre")
        self.assertIsNone(self.cursor.fetchone())
        self.assertEqual(self.cursor.fetchall(), [])

    def test_refuse_rows_where_there_are_none(self):
        for fetch in (self.cursor.fetchone, self.cursor.fetchmany, self.cursor.fetchall):
            with self.assertRaises(dbapi.Error):
                fetch()
        with self.assertRaises(dbapi.ProgrammingError):
            self.cursor.executemany("SELECT ?", [(1,)])

    def test_go_on_to_the_next_answer(self):
        self.fill(2)
        self.cursor.execute("SELECT Nome FROM Birre; SELECT COUNT(*) FROM Birre")
        self.assertEqual(self.cursor.fetchone(), ("birra 0",))
        self.assertIs(self.cursor.nextset(), True)
        self.assertEqual(self.cursor.fetchall(), [(2,)])
        self.assertIsNone(self.cursor.nextset())

    def test_call_procedures(self):
        self.cursor.execute("CREATE PROCEDURE Doppio @a int, @b int OUTPUT AS BEGIN SET @b = 2 * @a; SELECT @a AS A END")
        self.assertEqual(self.cursor.callproc("Doppio", [21, 0]), [21, 42])
        self.assertEqual(self.cursor.fetchall(), [(21,)])
        with self.assertRaises(dbapi.ProgrammingError):
            self.cursor.callproc("Manca")
        with self.assertRaises(dbapi.ProgrammingError):
            self.cursor.callproc("Doppio", [1, 2, 3])

    def test_take_and_give_every_kind_of_value(self):
        self.cursor.execute("CREATE TABLE Tipi (a bit, b bigint, c float, d nvarchar(20), e varbinary(8), f datetime, "
                            "g decimal(12,3), h date, i varchar(5))")
        given = (True, 2**40, 0.1, "perché '?' €", b"\x00\xff", datetime.datetime(2004, 2, 29, 10, 30), Decimal("1.125"),
                 datetime.date(2004, 2, 29), None)
        self.cursor.execute("INSERT INTO Tipi VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)", given)
        self.cursor.execute("SELECT * FROM Tipi")
        taken = self.cursor.fetchone()
        self.assertEqual(taken, given)
        self.assertEqual([type(value) for value in taken[5:8]], [datetime.datetime, Decimal, datetime.date])

    def test_take_sizes_that_mean_nothing_to_them(self):
        self.cursor.setinputsizes([25])
        self.cursor.setoutputsize(1000)
        self.cursor.setoutputsize(2000, 0)

    def test_that_are_closed_do_nothing_more(self):
        with self.database.cursor() as cursor:
            cursor.execute("SELECT 1")
        for act in (cursor.fetchone, lambda: cursor.execute("SELECT 1"), cursor.nextset):
            with self.assertRaises(dbapi.Error):
                act()

    def test_see_what_one_another_write(self):
        self.fill(1)
        self.database.cursor().execute("UPDATE Birre SET Nome = 'altra'")
        self.cursor.execute("SELECT Nome FROM Birre")
        self.assertEqual(self.cursor.fetchall(), [("altra",)])

    def test_raise_the_errors_of_their_kinds(self):
        self.cursor.execute("CREATE TABLE Chiavi (k int PRIMARY KEY)")
        self.cursor.execute("INSERT INTO Chiavi VALUES (1)")
        for kind, statement, parameters in (
                (dbapi.IntegrityError, "INSERT INTO Chiavi VALUES (?)", [1]),
                (dbapi.ProgrammingError, "SELEZIONA", []),
                (dbapi.ProgrammingError, "SELECT * FROM Manca", []),
                (dbapi.DataError, "INSERT INTO Chiavi VALUES ('x')", []),
                (dbapi.ProgrammingError, "SELECT ?", "x")):
            with self.assertRaises(kind, msg=statement):
                self.cursor.execute(statement, parameters)


class Transactions(DatabaseTest):
    def count(self):
        return self.database.execute("SELECT COUNT(*) FROM Birre").fetchone()[0]

    def test_begin_with_what_writes_and_end_with_commit_or_rollback(self):
        self.fill(2)
        self.cursor.execute("DELETE FROM Birre")
        self.database.rollback()
        self.assertEqual(self.count(), 2)
        self.cursor.execute("DELETE FROM Birre")
        self.database.commit()
        self.database.rollback()
        self.assertEqual(self.count(), 0)

    def test_do_not_begin_with_a_query(self):
        depth = "SELECT @@TRANCOUNT -- INSERT"
        self.assertEqual(self.database.execute(depth).fetchone(), (0,))
        self.assertEqual(self.database.execute("SELECT 'UPDATE' AS [DELETE] /* DROP */").fetchone(), ("UPDATE",))
        self.assertEqual(self.database.execute(depth).fetchone(), (0,))
        self.database.execute("WITH x AS (SELECT 1 AS n) INSERT INTO Birre SELECT 'x', n, NULL FROM x")
        self.assertEqual(self.database.execute(depth).fetchone(), (1,))
        self.database.rollback()

    def test_are_the_statements_own_with_autocommit(self):
        self.fill(1)
        self.assertIs(self.database.autocommit, False)
        self.database.autocommit = True
        self.cursor.execute("DELETE FROM Birre")
        self.database.rollback()
        self.assertEqual(self.count(), 0)

    def test_of_a_block_end_with_it(self):
        with self.database as same:
            self.assertIs(same, self.database)
            self.cursor.execute("INSERT INTO Birre VALUES ('una', 1, NULL)")
        with self.assertRaises(KeyError), self.database:
            self.cursor.execute("DELETE FROM Birre")
            raise KeyError
        self.assertEqual(self.count(), 1)

    def test_that_the_database_has_undone_can_be_rolled_back(self):
        self.cursor.execute("INSERT INTO Birre VALUES ('una', 1, NULL)")
        self.cursor.execute("ROLLBACK")
        self.database.rollback()
        self.assertEqual(self.count(), 0)

    def test_are_undone_when_the_connection_is_closed(self):
        first = dbapi.connect("Provider=KapLocal;Data Source=:memory:chiusa")
        second = dbapi.connect("Provider=KapLocal;Data Source=:memory:chiusa", autocommit=True)
        second.execute("CREATE TABLE T (a int)")
        first.execute("INSERT INTO T VALUES (1)")
        first.close()
        first.close()
        self.assertEqual(second.execute("SELECT COUNT(*) FROM T").fetchone(), (0,))
        second.close()
        for act in (first.commit, first.rollback, first.cursor):
            with self.assertRaises(dbapi.Error):
                act()
        self.assertEqual(self.database.ado.State, 1)


@unittest.skipIf(pandas is None, "pandas is not installed")
class Frames(DatabaseTest):
    def test_are_read_from_queries(self):
        self.fill(300)
        frame = pandas.read_sql("SELECT Nome, Gradi FROM Birre WHERE Gradi > ?", self.database, params=[1])
        self.assertEqual((list(frame.columns), len(frame)), (["Nome", "Gradi"], 297))


if __name__ == "__main__":
    unittest.main()
