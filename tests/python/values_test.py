"""Values across the border, in both directions."""

import datetime
import decimal
import enum
import math
import sys
import unittest

import kaputil
from support import ItalianTest, connection

Decimal = decimal.Decimal
Date = datetime.datetime


def passed(value):
    """The value with the type that it has by itself in the library."""
    return kaputil.Variant("Variant", value)


class Values(ItalianTest):
    def check(self, value, type_name):
        """It gets this type in the library and comes back as it was."""
        there = passed(value)
        self.assertEqual(there.type, type_name)
        self.assertEqual(there.value, value)
        self.assertIs(type(there.value), type(value))

    def check_from(self, type_name, given, value):
        """A value of this type in the library comes back as this one."""
        there = kaputil.Variant(type_name, given)
        self.assertEqual(there.type, type_name)
        self.assertEqual(there.value, value)
        self.assertIs(type(there.value), type(value))


class Marks(Values):
    def test_null_is_none(self):
        self.check(None, "Null")
        self.check_from("Null", 5, None)

    def test_empty_is_itself_and_false(self):
        self.assertIs(passed(kaputil.Empty).value, kaputil.Empty)
        self.assertEqual(passed(kaputil.Empty).type, "Empty")
        self.assertFalse(kaputil.Empty)
        self.assertEqual(repr(kaputil.Empty), "kaputil.Empty")

    def test_nothing_is_itself_and_false(self):
        self.assertIs(passed(kaputil.Nothing).value, kaputil.Nothing)
        self.assertEqual(passed(kaputil.Nothing).type, "Object")
        self.assertFalse(kaputil.Nothing)
        self.assertEqual(repr(kaputil.Nothing), "kaputil.Nothing")

    def test_copies_of_the_marks_are_the_marks(self):
        import copy
        import pickle

        for mark in (kaputil.Empty, kaputil.Nothing):
            self.assertIs(copy.deepcopy(mark), mark)
            self.assertIs(pickle.loads(pickle.dumps(mark)), mark)

    def test_an_argument_that_is_not_given_is_an_ellipsis(self):
        self.assertEqual(kaputil.KapRound(2.6, ..., "I"), 2.0)
        self.assertEqual(kaputil.KapRound(2.6, Decimali=..., Arrotonda="I"), 2.0)
        self.assertEqual(passed(...).type, "Error")
        self.assertIs(passed(...).value, ...)


class Numbers(Values):
    def test_whole_numbers_take_the_smallest_type_that_holds_them(self):
        for number in (-32768, -1, 0, 32767):
            self.check(number, "Integer")
        for number in (-(2**31), -32769, 32768, 2**31 - 1):
            self.check(number, "Long")

    def test_larger_whole_numbers_are_decimals(self):
        for number in (2**31, -(2**31) - 1, 2**63, 2**96 - 1, 1 - 2**96):
            self.assertEqual(passed(number).type, "Decimal")
            self.assertEqual(passed(number).value, Decimal(number))

    def test_whole_numbers_beyond_96_bits_overflow(self):
        for number in (2**96, -(2**96), 10**6000):
            self.assertRaisesNumber(6, passed, number)

    def test_every_whole_type_is_an_int(self):
        for type_name in ("Byte", "Integer", "Long"):
            self.check_from(type_name, 7, 7)
        self.assertRaisesNumber(6, kaputil.Variant, "Byte", 256)

    def test_numbers_of_an_enumeration_are_whole_numbers(self):
        class Colour(enum.IntEnum):
            RED = 3

        self.assertEqual(passed(Colour.RED), kaputil.Variant("Integer", 3))
        self.assertEqual(passed(kaputil.kaHBarra), kaputil.Variant("Integer", 270))
        self.assertEqual(kaputil.CostantiNumeriche.kaPartitaIva, 3)

    def test_real_numbers_are_floats(self):
        for number in (0.1, -0.0, 5e-324, 1.7976931348623157e308, math.inf):
            self.check(number, "Double")
        self.assertTrue(math.isnan(passed(math.nan).value))
        self.check_from("Single", 0.5, 0.5)
        self.assertEqual(kaputil.Variant("Single", 0.1).value, 0.10000000149011612)

    def test_truth_is_a_bool(self):
        self.check(True, "Boolean")
        self.check(False, "Boolean")
        self.check_from("Boolean", -1, True)


class Amounts(Values):
    def test_decimals_keep_their_value_to_the_limits(self):
        for text in ("79228162514264337593543950335", "-79228162514264337593543950335", "0.5",
                     "-0.0000000000000000000000000001", "7.9228162514264337593543950335"):
            self.check(Decimal(text), "Decimal")

    def test_decimals_keep_the_zeros_behind_their_point(self):
        for text in ("1.50", "100.00", "-0.10"):
            self.assertEqual(str(passed(Decimal(text)).value), text)

    def test_decimals_are_rounded_half_to_even_to_what_fits(self):
        self.assertEqual(passed(Decimal("0.00000000000000000000000000005")).value, 0)
        self.assertEqual(passed(Decimal("0.00000000000000000000000000015")).value, Decimal("2e-28"))
        self.assertEqual(passed(Decimal("1e-999999999")).value, 0)
        self.assertEqual(passed(Decimal("0e999999")).value, 0)

    def test_decimals_beyond_the_limits_overflow(self):
        for text in ("79228162514264337593543950336", "1e29", "-1e999999999", "NaN", "Infinity"):
            self.assertRaisesNumber(6, passed, Decimal(text))

    def test_currency_is_a_decimal_with_four_places(self):
        self.check_from("Currency", Decimal("1.25"), Decimal("1.2500"))
        self.assertEqual(str(kaputil.Variant("Currency", Decimal("1.25")).value), "1.2500")
        self.assertEqual(str(kaputil.Variant("Currency", Decimal("-0.0001")).value), "-0.0001")
        self.check_from("Currency", Decimal("922337203685477.5807"), Decimal("922337203685477.5807"))
        self.assertRaisesNumber(6, kaputil.Variant, "Currency", Decimal("922337203685477.5808"))


class Dates(Values):
    def test_dates_keep_their_time_in_every_century(self):
        for date in (Date(1899, 12, 30), Date(1899, 12, 29, 6), Date(1899, 12, 30, 18), Date(1753, 1, 1, 23, 59, 59),
                     Date(100, 1, 1), Date(100, 1, 1, 0, 0, 1), Date(9999, 12, 31, 12), Date(9999, 12, 31, 23, 59, 59)):
            self.check(date, "Date")

    def test_dates_of_our_time_keep_every_microsecond(self):
        for microsecond in (1, 999, 1001, 250000, 499999, 500001, 999998, 999999):
            self.check(Date(2003, 12, 25, 10, 30, 15, microsecond), "Date")

    def test_dates_far_away_keep_the_milliseconds(self):
        for date in (Date(100, 1, 1, 23, 59, 59, 999000), Date(9998, 6, 30, 8, 0, 0, 7000)):
            self.check(date, "Date")

    def test_the_fraction_of_a_date_before_1900_counts_away_from_the_origin(self):
        self.assertEqual(kaputil.change_type(Date(1899, 12, 29, 6), "Double"), -1.25)
        self.assertEqual(kaputil.Variant("Date", -1.25).value, Date(1899, 12, 29, 6))
        self.assertEqual(kaputil.Variant("Date", -0.25).value, Date(1899, 12, 30, 6))

    def test_the_last_instant_of_the_calendar_stays_in_it(self):
        self.assertEqual(passed(Date.max).value, Date(9999, 12, 31, 23, 59, 59, 999960))

    def test_a_date_without_time_is_midnight(self):
        self.assertEqual(passed(datetime.date(2003, 12, 25)).value, Date(2003, 12, 25))

    def test_years_before_100_overflow(self):
        self.assertRaisesNumber(6, passed, Date(99, 12, 31))
        self.assertRaisesNumber(6, passed, datetime.date(1, 1, 1))

    def test_a_time_zone_is_refused(self):
        with self.assertRaisesRegex(ValueError, "time zone"):
            passed(Date(2003, 12, 25, tzinfo=datetime.timezone.utc))


class Texts(Values):
    def test_texts_keep_every_code_unit(self):
        for text in ("", "però €", "a\0b", "\0", "\U0001f600", "\ud83d\ude00"[:1], "\ud800x", "x\udc00"):
            self.check(text, "String")

    def test_a_pair_of_halves_is_its_character(self):
        self.assertEqual(passed("\ud83d\ude00").value, "\U0001f600")

    def test_a_character_outside_the_plane_counts_twice_as_in_the_library(self):
        bag = kaputil.Dispatch("KapUtil.CProprieta")
        bag.Scrivi("A", "\U0001f600\0€")
        self.assertEqual(bag.Leggi("A"), "\U0001f600\0€")

    def test_names_may_hold_anything(self):
        self.assertRaisesNumber(429, kaputil.Dispatch, "\ud800")
        self.assertRaisesNumber(438, getattr, connection(), "\udc00 \0")


class Arrays(Values):
    def test_lists_are_arrays_from_zero(self):
        self.check([], "Array")
        self.check([1, "due", None, True, 2.5], "Array")
        self.check([1, [2, [3]], []], "Array")

    def test_tuples_come_back_as_lists(self):
        self.assertEqual(passed((1, (2,))).value, [1, [2]])

    def test_bytes_are_byte_arrays(self):
        for value in (b"", b"\x00\xff", bytes(range(256))):
            self.check(value, "Array")
        self.assertEqual(passed(bytearray(b"ab")).value, b"ab")

    def test_arrays_with_other_bounds_are_lists_from_their_first_element(self):
        error = kaputil.Dispatch("KapUtil.CErrore")
        error.AddMessaggio("A")
        error.AddMessaggio("B")
        self.assertEqual(error.MsgToArray(), ["A", "B"])

    def test_a_list_that_holds_itself_ends_in_an_error(self):
        endless = []
        endless.append(endless)
        self.assertRaisesNumber(28, passed, endless)

    def test_lists_that_are_nested_without_end_are_refused(self):
        limit = sys.getrecursionlimit()
        sys.setrecursionlimit(10**6)
        self.addCleanup(sys.setrecursionlimit, limit)
        deep = []
        for _ in range(300_000):
            deep = [deep]
        self.assertRaisesNumber(28, passed, deep)
        self.assertRaisesNumber(28, kaputil.KapRound, deep)
        while deep:
            deep = deep[0]  # Python takes it apart in one go, and would not get to its end

    def test_arrays_that_are_nested_step_by_step_are_refused(self):
        def nested(count):
            array = kaputil.Variant("Array", [])
            for _ in range(count):
                array = kaputil.Variant("Array", [array])
            return array

        self.assertEqual(nested(400).type, "Array")
        self.assertRaisesNumber(28, nested, 300_000)

    def test_a_reference_that_holds_itself_ends_in_an_error(self):
        reference = kaputil.Ref()
        reference.value = reference
        self.assertRaisesNumber(28, kaputil.KapRound, reference, 2)
        outer = kaputil.Ref([reference])
        self.assertRaisesNumber(28, kaputil.kapEmpty, outer)

    def test_long_rows_of_objects_end_one_after_the_other(self):
        class Holder:
            def __init__(self, held):
                self.held = held

        for make in (lambda inner: Holder(inner), lambda inner: inner):
            chain = kaputil.Dispatch("KapUtil.CProprieta")
            for _ in range(20_000):
                outer = kaputil.Dispatch("KapUtil.CFG_Campi")
                outer.Collezione.Add(make(chain))
                chain = outer
            del chain, outer

    def test_lists_of_objects_are_arrays_of_them(self):
        bag = kaputil.Dispatch("KapUtil.CProprieta")
        self.assertEqual(passed([bag, kaputil.Nothing]).value, [bag, kaputil.Nothing])


class Objects(Values):
    def test_library_objects_stay_themselves(self):
        bag = kaputil.Dispatch("KapUtil.CProprieta")
        self.check(bag, "Object")
        self.assertNotEqual(bag, kaputil.Dispatch("KapUtil.CProprieta"))
        self.assertEqual(hash(passed(bag).value), hash(bag))

    def test_python_objects_stay_themselves(self):
        form = object()
        self.assertIs(passed(form).value, form)
        self.assertEqual(passed(form).type, "Object")

    def test_none_where_an_object_is_expected_is_nothing(self):
        self.assertIs(kaputil.Variant("Object", None).value, kaputil.Nothing)
        kaputil.Errore = None
        self.addCleanup(setattr, kaputil, "Errore", kaputil.Dispatch("KapUtil.CErrore"))
        self.assertRaisesNumber(13, kaputil.Variant, "Object", 5)


class ExactTypes(Values):
    def test_types_are_chosen_by_name(self):
        self.check_from("Currency", "1,5", Decimal("1.5000"))
        self.check_from("String", 1.5, "1,5")
        self.check_from("Date", "25/12/03", Date(2003, 12, 25))
        self.check_from("Decimal", 1, Decimal(1))
        self.check_from("Array", [1], [1])
        self.check_from("Object", kaputil.Nothing, kaputil.Nothing)
        self.check_from("Empty", 1, kaputil.Empty)

    def test_unknown_names_are_refused(self):
        error = self.assertRaisesNumber(5, kaputil.Variant, "Numero", 1)
        self.assertEqual(error.description, "There is no type named 'Numero'.")
        self.assertRaisesNumber(5, kaputil.change_type, 1, "")

    def test_a_variant_is_taken_wherever_a_value_is(self):
        amount = kaputil.Variant("Currency", Decimal("2.5"))
        self.assertEqual(kaputil.KapRound(amount), 3)
        self.assertEqual(passed(amount).type, "Currency")
        self.assertEqual(passed([amount]).value, [Decimal("2.5000")])
        self.assertEqual(kaputil.change_type(amount, "String"), "2,5")

    def test_variants_compare_and_show_type_and_value(self):
        self.assertEqual(kaputil.Variant("Long", 1), kaputil.Variant("Long", 1))
        self.assertNotEqual(kaputil.Variant("Long", 1), kaputil.Variant("Integer", 1))
        self.assertEqual(len({kaputil.Variant("Long", 1), kaputil.Variant("Long", 1)}), 1)
        self.assertEqual(repr(kaputil.Variant("Long", 1)), "kaputil.Variant('Long', 1)")


class Runtime(Values):
    def test_conversions_follow_the_locale(self):
        self.assertEqual(kaputil.change_type("3,5", "Double"), 3.5)
        self.assertEqual(kaputil.change_type(True, "String"), "Vero")
        kaputil.set_locale("en-US")
        self.assertEqual(kaputil.change_type("3.5", "Double"), 3.5)
        self.assertEqual(kaputil.locale(), "en-US")
        self.assertRaisesNumber(5, kaputil.set_locale, "xx-XX")

    def test_numbers_and_dates_are_recognised(self):
        self.assertTrue(kaputil.is_numeric("1.234,5"))
        self.assertFalse(kaputil.is_numeric(None))
        self.assertTrue(kaputil.is_date("31/12/03"))
        self.assertFalse(kaputil.is_date(37980))

    def test_values_are_written_by_formats(self):
        self.assertEqual(kaputil.format(Date(2003, 12, 25), "d mmmm yyyy"), "25 dicembre 2003")
        self.assertEqual(kaputil.format(Decimal("1234.5"), "#,##0.00"), "1.234,50")
        self.assertRaisesNumber(13, kaputil.format, [1], "0")

    def test_errors_have_the_runtimes_numbers(self):
        self.assertRaisesNumber(94, kaputil.change_type, None, "Long")
        self.assertRaisesNumber(13, kaputil.change_type, "testo", "Long")
        self.assertRaisesNumber(6, kaputil.change_type, 40000, "Integer")
        self.assertRaisesNumber(91, kaputil.change_type, kaputil.Nothing, "String")


class DatabaseValues(Values):
    def test_fields_of_every_type_come_as_their_values(self):
        rows = kaputil.OpenRecordset(
            "SELECT CAST(7 AS tinyint) AS B, CAST(7 AS smallint) AS I, CAST(7 AS int) AS L, CAST(0.5 AS real) AS S, "
            "CAST(0.1 AS float) AS D, CAST(1.5 AS money) AS C, CAST(1.50 AS decimal(10, 2)) AS N, "
            "CAST('2003-12-25 10:30:15' AS datetime) AS T, CAST(1 AS bit) AS V, CAST('x' AS varchar(5)) AS X",
            connection())
        expected = [7, 7, 7, 0.5, 0.1, Decimal("1.5"), Decimal("1.50"), Date(2003, 12, 25, 10, 30, 15), True, "x"]
        values = [field.Value for field in rows.Fields]
        self.assertEqual(values, expected)
        self.assertEqual([type(value) for value in values], [type(value) for value in expected])

    def test_values_of_every_type_are_written_and_read_again(self):
        database = connection()
        database.Execute("CREATE TABLE T (K int PRIMARY KEY, D datetime, C money, N decimal(18, 6), X nvarchar(20), B varbinary(9))")
        rows = kaputil.OpenRecordset("SELECT * FROM T", database, CloseConnection=False)
        written = {"K": 1, "D": Date(1899, 12, 29, 6), "C": Decimal("-0.0001"), "N": Decimal("1.234567"),
                   "X": "\U0001f600€", "B": b"\x00\xff"}
        rows.AddNew()
        for name, value in written.items():
            rows.Fields(name).Value = value
        rows.Update()
        again = kaputil.OpenRecordset("SELECT * FROM T", database)
        self.assertEqual({field.Name: field.Value for field in again.Fields}, written)


if __name__ == "__main__":
    unittest.main()
