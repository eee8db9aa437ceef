"""Exceptions of Python objects on their way through the library."""

import traceback
import unittest

import kaputil
from kaputil import _errors
from support import ItalianTest, connection


class Raising:
    """A text box that cannot tell its text."""

    _default_member_ = "Text"

    def __init__(self, error):
        self.error = error

    @property
    def Text(self):
        raise self.error


class Exceptions(ItalianTest):
    def test_they_reach_the_caller_unchanged_with_their_traceback(self):
        error = ValueError("nessun testo", 5)
        try:
            kaputil.kapEmpty(Raising(error))
            self.fail("nothing was raised")
        except ValueError as caught:
            self.assertIs(caught, error)
            names = [frame.name for frame in traceback.extract_tb(caught.__traceback__)]
        self.assertEqual(error.args, ("nessun testo", 5))
        self.assertEqual(names[-1], "Text")
        self.assertEqual(names[0], "test_they_reach_the_caller_unchanged_with_their_traceback")

    def test_their_cause_stays_with_them(self):
        def fail():
            try:
                {}["x"]
            except KeyError as cause:
                raise ValueError("testo") from cause

        kaputil.register("Prova.Uno", fail)
        self.addCleanup(kaputil.unregister, "Prova.Uno")
        with self.assertRaises(ValueError) as caught:
            kaputil.Dispatch("Prova.Uno")
        self.assertIsInstance(caught.exception.__cause__, KeyError)

    def test_a_missing_attribute_of_a_form_is_its_own_error_once(self):
        reads = []

        class Form:
            _default_member_ = "Text"

            @property
            def Text(self):
                reads.append(1)
                return self.manca

        with self.assertRaisesRegex(AttributeError, "manca"):
            kaputil.kapEmpty(Form())
        self.assertEqual(reads, [1])

    def test_the_object_in_whose_call_they_were_raised_goes_on_working(self):
        bag = kaputil.Dispatch("KapUtil.CProprieta")
        bag.Scrivi("A", 1)
        with self.assertRaises(ZeroDivisionError):
            bag.Scrivi("B", Raising(ZeroDivisionError()))
        self.assertEqual(bag.Leggi(), "<A>1</A>")
        bag.Scrivi("B", 2)
        self.assertEqual(bag.Leggi("B"), "2")

    def test_they_pass_through_calls_within_calls(self):
        class Outer:
            _default_member_ = "Text"

            @property
            def Text(self):
                return kaputil.KapRound(Raising(error))

        error = LookupError("in fondo")
        with self.assertRaises(LookupError) as caught:
            kaputil.kapEmpty(Outer())
        self.assertIs(caught.exception, error)

    def test_automation_errors_keep_their_number_and_texts(self):
        error = kaputil.AutomationError(-2147221503, "testo", "Modulo")
        with self.assertRaises(kaputil.AutomationError) as caught:
            kaputil.kapEmpty(Raising(error))
        self.assertIs(caught.exception, error)


class Trapped(ItalianTest):
    def test_members_that_trap_errors_trap_them(self):
        class Form:
            """Passed where a connection is expected."""

        self.assertFalse(kaputil.DB_Delete(Form(), "SELECT 1 AS A", ""))

    def test_the_library_compares_the_number_of_an_automation_error(self):
        # A default member that does not exist or needs arguments means: this object has no value.
        self.assertRaisesNumber(13, kaputil.kapEmpty, Raising(kaputil.AutomationError(438, "manca")))
        self.assertRaisesNumber(13, kaputil.kapEmpty, Raising(kaputil.AutomationError(449)))

    def test_any_other_exception_has_the_number_of_exceptions_and_its_text(self):
        self.assertEqual(_errors.parts(ValueError("testo")), (-2147352567, "testo", ""))
        self.assertEqual(_errors.parts(kaputil.AutomationError(5, "testo", "Modulo")), (5, "testo", "Modulo"))

    def test_numbers_that_are_none_count_as_any_exception(self):
        for number in ("5", None, 2**31, 5.0):
            self.assertEqual(_errors.parts(kaputil.AutomationError(number, "x"))[0], -2147352567)

    def test_an_exception_that_cannot_tell_its_text_is_named(self):
        class Mute(Exception):
            def __str__(self):
                raise ValueError("niente")

        self.assertEqual(_errors.parts(Mute()), (-2147352567, "Mute", ""))
        with self.assertRaises(Mute):
            kaputil.kapEmpty(Raising(Mute()))

    def test_interrupting_the_program_is_never_trapped(self):
        class Interrupted:
            _default_member_ = "Text"

            @property
            def Text(self):
                raise KeyboardInterrupt

        with self.assertRaises(KeyboardInterrupt):
            kaputil.kapEmpty(Interrupted())
        with self.assertRaises(SystemExit):
            kaputil.kapEmpty(Raising(SystemExit(3)))
        self.assertFalse(kaputil.kapEmpty("x"))

    def test_names_that_cannot_be_looked_up_raise_what_the_look_up_raised(self):
        class Form:
            def __dir__(self):
                raise OSError("niente elenco")

        with self.assertRaises(OSError):
            kaputil.invoke(Form(), "Caption")


if __name__ == "__main__":
    unittest.main()
