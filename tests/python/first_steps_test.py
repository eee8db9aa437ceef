"""The first calls that a reader tries, as they stand."""

import unittest

import kaputil
from support import ItalianTest, connection


class FirstSteps(ItalianTest):
    def test_a_property_string_is_written_and_read(self):
        p = kaputil.Dispatch("KapUtil.CProprieta")
        p.Scrivi("Codice", 12);  r = p.Leggi("codice")  # fmt: skip
        self.assertEqual(r, "12")

    def test_the_package_tells_its_version(self):
        self.assertRegex(kaputil.__version__, r"\A\d+(\.\d+){3}\Z")

    def test_a_global_member_is_called(self):
        self.assertEqual(kaputil.KapRound(2.675, 2), 2.68)

    def test_an_argument_is_passed_by_reference(self):
        f = kaputil.Dispatch("KapUtil.StdFunctions")
        cn = connection()
        n = kaputil.Ref(-1)
        rs = f.OpenRecordset("SELECT 1 AS A", cn, n)
        self.assertEqual(n.value, 3)
        self.assertEqual(rs.Fields("A").Value, 1)


if __name__ == "__main__":
    unittest.main()
