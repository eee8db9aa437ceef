"""The register of document numbers."""

import datetime
import unittest
import uuid

import kaputil
import kaputil.numbers
from support import ItalianTest, connection


def private_database():
    """A connection to a database in memory that no other test sees."""
    return connection(f"Provider=KapLocal;Data Source=:memory:{uuid.uuid4()}")


class TheRegisterOfNumbers(ItalianTest):
    def setUp(self):
        super().setUp()
        self.database = private_database()
        self.database.Execute(
            "CREATE TABLE vtx_TabDoc (Codice varchar(3), TipoProg varchar(5));"
            "CREATE TABLE vtx_TabPro (Codice varchar(5), Anno smallint, n_Def int, n_Prov int, GestProvv int);"
            "CREATE TABLE vtx_TabProPrenotati (Codice varchar(5), Anno smallint, Numero int, Stato varchar(1));"
            "CREATE TABLE mag_TDocumenti (Anno smallint, Tipo varchar(3), Numero int, Data datetime, "
            "MC_Registrazione varchar(10));"
            "INSERT INTO vtx_TabDoc VALUES ('FAI', 'FAT');"
            "INSERT INTO vtx_TabPro VALUES ('FAT', 2025, 4, 0, 0);"
            "INSERT INTO vtx_TabProPrenotati VALUES ('FAT', 2025, 4, '');"
            "INSERT INTO mag_TDocumenti VALUES (2025, 'FAI', 3, '20250310 10:30', 'M1')"
        )

    def test_has_a_row_for_every_number(self):
        rows = kaputil.numbers.register(self.database, "FAT", 2025)
        self.assertEqual([(row.first, row.last, row.state) for row in rows], [(1, 2, "missing"), (3, 3, "used"), (4, 4, "reserved")])
        self.assertEqual(rows[1].carriers, [("document", "FAI", 3, datetime.date(2025, 3, 10), True)])
        self.assertEqual(rows[2].carriers[0].kind, "reservation")

    def test_tells_what_is_amiss(self):
        (found,) = kaputil.numbers.registers(self.database, year=2025, today=datetime.date(2026, 1, 1))
        self.assertEqual((found.counter, found.definitive, found.has_counter), ("FAT", 4, True))
        self.assertEqual(found.totals["missing"], 2)
        self.assertEqual([(one.kind, one.first, one.last) for one in found.anomalies], [("missing", 1, 2), ("reservationExpired", 4, 4)])

    def test_of_what_is_not_there_is_empty(self):
        self.assertEqual(kaputil.numbers.register(self.database, "ORD", 2025), [])

    def test_raises_the_errors_of_the_database(self):
        self.assertRaisesNumber(-2147217865, kaputil.numbers.registers, private_database())


if __name__ == "__main__":
    unittest.main()
