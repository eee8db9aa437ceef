"""The module in an SQLite that knows nothing of the library."""

import hashlib
import sqlite3
import unittest

from support import MODULE, DatabaseTest

COMPANY = """
CREATE TABLE Clienti (Codice int NOT NULL PRIMARY KEY, Nome varchar(20) NOT NULL UNIQUE,
                      CHECK (LEN(Nome) > 1))
CREATE TABLE Fatture (Numero int IDENTITY PRIMARY KEY, Cliente varchar(20) REFERENCES Clienti (Nome),
                      Data datetime NULL, Giorno date NULL, Importo money NULL, Sconto decimal(9,3) NULL,
                      Doppio AS Importo * 2, Iniziale AS UPPER(LEFT(Cliente, 1)) PERSISTED,
                      Impronta AS HASHBYTES('MD5', Cliente), Versione timestamp)
CREATE INDEX PerData ON Fatture (Data) WHERE Importo > 100
CREATE INDEX PerIniziale ON Fatture (Iniziale)
INSERT INTO Clienti VALUES (1, 'Rossi'), (2, 'de Luca'), (3, 'Bianchi'), (4, 'Àlvaro')
INSERT INTO Fatture (Cliente, Data, Giorno, Importo, Sconto) VALUES
    ('rossi', '20250331 10:30:15.250', '20250331', 1250.5, -7.25),
    ('DE LUCA', '20250402', NULL, -0.01, NULL), ('Bianchi', NULL, '18990101', 400000000000000.1234, 0.001)
"""


class WithoutTheModule(DatabaseTest):
    def test_the_order_of_texts_is_missing(self):
        self.make(COMPANY)
        with self.assertRaisesRegex(sqlite3.OperationalError, "no such collation sequence: KAP_CI"):
            self.rows("SELECT * FROM Clienti ORDER BY Nome", connection=self.opened())


class WithTheModule(DatabaseTest):
    def setUp(self):
        super().setUp()
        self.make(COMPANY)

    def test_texts_are_found_and_sorted_as_the_library_does(self):
        self.assertEqual(self.rows("SELECT Nome FROM Clienti ORDER BY Nome"),
                         [("Àlvaro",), ("Bianchi",), ("de Luca",), ("Rossi",)])
        self.assertEqual(self.rows("SELECT Codice FROM Clienti WHERE Nome = 'ROSSI  '"), [(1,)])
        self.assertEqual(self.rows("SELECT count(*) FROM Fatture JOIN Clienti ON Nome = Cliente"), [(3,)])

    def test_the_file_is_checked(self):
        connection = self.loaded()
        self.assertEqual(self.rows("PRAGMA integrity_check", connection=connection), [("ok",)])
        self.assertEqual(self.rows("PRAGMA foreign_key_check", connection=connection), [])
        self.assertEqual(connection.execute("REINDEX").fetchall(), [])

    def test_a_damaged_index_is_found(self):
        connection = self.loaded()
        index = self.rows("SELECT rowid, sql FROM sqlite_schema WHERE sql LIKE '%PerIniziale%'", connection=connection)
        connection.execute("PRAGMA writable_schema = ON")
        connection.execute("UPDATE sqlite_schema SET sql = replace(sql, '\"Iniziale\"', '\"Cliente\"') WHERE rowid = ?",
                           (index[0][0],))
        connection.commit()
        connection.close()
        self.assertNotEqual(self.rows("PRAGMA integrity_check"), [("ok",)], index)

    def test_computed_columns_are_computed(self):
        self.assertEqual(self.rows("SELECT Iniziale, kap_text(Doppio, 'money'), Impronta FROM Fatture "
                                   "WHERE Numero = 2"),
                         [("D", "-0.0200", hashlib.md5(b"DE LUCA").digest())])

    def test_checks_hold(self):
        with self.assertRaises(sqlite3.IntegrityError):
            self.loaded().execute("INSERT INTO Clienti VALUES (9, 'x')")

    def test_views_show_amounts_as_numbers_and_dates_as_texts(self):
        self.assertEqual(
            self.rows("SELECT Data, Giorno, Importo, Sconto, Cliente FROM Fatture_readable ORDER BY Numero"),
            [("2025-03-31 10:30:15.250", "2025-03-31", 1250.5, -7.25, "rossi"),
             ("2025-04-02 00:00:00", None, -0.01, None, "DE LUCA"),
             (None, "1899-01-01", 400000000000000.1234, 0.001, "Bianchi")])
        connection = self.loaded()
        views = self.rows("SELECT name FROM temp.sqlite_schema", connection=connection)
        self.assertEqual(views, [("Fatture_readable",)])
        self.assertEqual(self.rows("SELECT name FROM main.sqlite_schema WHERE name LIKE '%readable'",
                                   connection=connection), [])

    def test_views_follow_the_tables_when_they_are_asked_to(self):
        connection = self.loaded()
        connection.execute("CREATE TABLE Altra (D date, [strano \"nome\"] decimal(5,1))")
        self.assertEqual(self.rows("SELECT kap_views()", connection=connection), [(2,)])
        connection.execute("INSERT INTO Altra VALUES (kap_stored('2025-01-31', 'date'), 125)")
        self.assertEqual(self.rows("SELECT * FROM Altra_readable", connection=connection), [("2025-01-31", 12.5)])

    def test_values_are_read_and_made(self):
        cases = [
            ("kap_text(12345, 'decimal(9,2)')", "123.45"),
            ("kap_text(-1, 'money')", "-0.0001"),
            ("kap_text(9223372036854775807, 'money')", "922337203685477.5807"),
            ("kap_text(45747.5, 'datetime')", "2025-03-31 12:00:00"),
            ("kap_text(45747, 'date')", "2025-03-31"),
            ("kap_number(12345, 'decimal(9,2)')", 123.45),
            ("kap_text(NULL, 'money')", None),
            ("kap_stored('2025-03-31 12:00', 'datetime')", 45747.5),
            ("kap_stored('123.45', 'decimal(9,2)')", 12345),
            ("kap_stored('1.5', 'money')", 15000),
        ]
        connection = self.loaded()
        for call, expected in cases:
            self.assertEqual(self.rows("SELECT " + call, connection=connection), [(expected,)], call)

    def test_times_with_many_decimals_are_read(self):
        self.make("CREATE TABLE Orari (O time(3), D datetime2, Z datetimeoffset)\n"
                  "INSERT INTO Orari VALUES ('10:30:00.125', '20250331 10:30', '2025-03-31 10:30 +02:00'), "
                  "(NULL, NULL, '2025-03-31 09:30 +00:00')")
        self.assertEqual(self.rows("SELECT O, D FROM Orari_readable WHERE O IS NOT NULL"),
                         [("10:30:00.125", "2025-03-31 10:30:00.0000000")])
        self.assertEqual([row[0][:16] for row in self.rows("SELECT Z FROM Orari_readable ORDER BY Z")],
                         ["2025-03-31 09:30", "2025-03-31 10:30"])
        self.assertEqual([row[0][:16] for row in self.rows(
            "SELECT kap_text(Z, 'datetimeoffset') FROM Orari ORDER BY Z")], ["2025-03-31 10:30", "2025-03-31 09:30"])

    def test_what_cannot_be_is_an_error(self):
        connection = self.loaded()
        for call, reason in [("kap_text(1, 'strano')", "strano"),
                             ("kap_stored('domani', 'date')", "date"),
                             ("kap_stored('1e99', 'money')", "")]:
            with self.assertRaisesRegex(sqlite3.OperationalError, reason, msg=call):
                self.rows("SELECT " + call, connection=connection)

    def test_conditions_use_the_index_of_a_column(self):
        plan = self.rows("EXPLAIN QUERY PLAN SELECT Numero FROM Fatture WHERE Importo > 1000000 AND "
                         "Data >= kap_stored('2025-01-01', 'datetime')")
        self.assertIn("PerData", plan[0][-1])

    def test_many_connections_come_and_go(self):
        for _ in range(20):
            connection = self.loaded()
            connection.execute("SELECT count(*) FROM Fatture_readable WHERE Cliente = 'rossi'").fetchone()
            connection.close()

    def test_it_is_loaded_twice_without_harm(self):
        connection = self.loaded()
        connection.load_extension(MODULE)
        self.assertEqual(self.rows("SELECT count(*) FROM Fatture_readable", connection=connection), [(3,)])


class OtherFiles(DatabaseTest):
    def test_files_of_other_programs_are_read_too(self):
        connection = sqlite3.connect(self.file)
        connection.execute("CREATE TABLE t (a WHATEVER, b, c DECIMAL(5,2))")
        connection.execute("INSERT INTO t VALUES (1, 'x', 2)")
        connection.commit()
        connection.close()
        self.assertEqual(self.rows("SELECT a, b FROM t"), [(1, "x")])

    def test_an_empty_file_is_loaded_into(self):
        self.assertEqual(self.rows("SELECT kap_views()"), [(0,)])


if __name__ == "__main__":
    unittest.main()
