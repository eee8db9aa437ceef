"""Values across the border, in both directions."""

import datetime
import decimal
import unittest

import kaputil


def round_trip(value):
    return kaputil.Variant("Variant", value)


class Values(unittest.TestCase):
    def setUp(self):
        self.locale = kaputil.locale()
        kaputil.set_locale("it-IT")
        self.addCleanup(kaputil.set_locale, self.locale)

    def check(self, value, type_name):
        passed = round_trip(value)
        self.assertEqual(passed.type, type_name)
        self.assertEqual(passed.value, value)
        self.assertIs(type(passed.value), type(value))

    def test_whole_numbers_take_the_smallest_type_that_holds_them(self):
        self.check(-32768, "Integer")
        self.check(32768, "Long")
        self.check(-(2**31), "Long")
        self.assertEqual(round_trip(2**31).value, decimal.Decimal(2**31))
        with self.assertRaises(kaputil.AutomationError) as caught:
            round_trip(2**96)
        self.assertEqual(caught.exception.number, 6)

    def test_other_plain_values_keep_their_types(self):
        self.check(True, "Boolean")
        self.check(0.1, "Double")
        self.check(None, "Null")
        self.check(decimal.Decimal("79228162514264337593543950335"), "Decimal")
        self.check(decimal.Decimal("-0.0000000000000000000000000001"), "Decimal")
        self.assertEqual(str(round_trip(decimal.Decimal("1.50")).value), "1.50")

    def test_the_marks_are_themselves_and_false(self):
        self.assertIs(round_trip(kaputil.Empty).value, kaputil.Empty)
        self.assertIs(round_trip(kaputil.Nothing).value, kaputil.Nothing)
        self.assertFalse(kaputil.Empty)
        self.assertFalse(kaputil.Nothing)

    def test_texts_keep_every_code_unit(self):
        for text in ["", "però €", "a\0b", "\U0001f600", "\ud800x", "x\udc00"]:
            self.check(text, "String")

    def test_dates_keep_their_time_in_every_century(self):
        for date in [
            datetime.datetime(1899, 12, 30),
            datetime.datetime(1899, 12, 29, 6),
            datetime.datetime(1753, 1, 1, 23, 59, 59),
            datetime.datetime(100, 1, 1),
            datetime.datetime(9999, 12, 31, 12),
            datetime.datetime(2003, 12, 25, 10, 30, 15, 250000),
        ]:
            self.check(date, "Date")
        self.assertEqual(round_trip(datetime.date(2003, 12, 25)).value, datetime.datetime(2003, 12, 25))

    def test_lists_and_bytes_are_arrays(self):
        self.check([1, "due", [3.5, None]], "Array")
        self.check(b"\x00\xff", "Array")
        self.assertEqual(round_trip((1, 2)).value, [1, 2])

    def test_arrays_with_other_bounds_are_lists(self):
        error = kaputil.Dispatch("KapUtil.CErrore")
        error.AddMessaggio("A")
        error.AddMessaggio("B")
        self.assertEqual(error.MsgToArray(), ["A", "B"])

    def test_exact_types_are_chosen_by_name(self):
        for type_name, value in [("Byte", 7), ("Single", 0.5), ("Currency", decimal.Decimal("1.2500")), ("Long", 7)]:
            exact = kaputil.Variant(type_name, value)
            self.assertEqual((exact.type, exact.value), (type_name, value))
        with self.assertRaises(kaputil.AutomationError) as caught:
            kaputil.Variant("Numero", 1)
        self.assertEqual(caught.exception.number, 5)

    def test_conversions_follow_the_locale(self):
        self.assertEqual(kaputil.change_type("3,5", "Double"), 3.5)
        self.assertEqual(kaputil.change_type(True, "String"), "Vero")
        self.assertTrue(kaputil.is_numeric("1.234,5"))
        self.assertFalse(kaputil.is_numeric(None))
        self.assertTrue(kaputil.is_date("31/12/03"))
        self.assertEqual(kaputil.format(datetime.datetime(2003, 12, 25), "d mmmm yyyy"), "25 dicembre 2003")
        kaputil.set_locale("en-US")
        self.assertEqual(kaputil.change_type("3.5", "Double"), 3.5)


if __name__ == "__main__":
    unittest.main()
