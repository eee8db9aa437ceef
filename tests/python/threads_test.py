"""Threads: whose objects are whose, and what goes on at the same time."""

import os
import sys
import tempfile
import threading
import unittest

import kaputil
from support import ItalianTest, connection


def in_another_thread(function):
    """What the function gives or raises when another thread calls it."""
    outcome = []

    def work():
        try:
            outcome.append(function())
        except Exception as error:
            outcome.append(error)

    thread = threading.Thread(target=work)
    thread.start()
    thread.join()
    return outcome[0]


class Ownership(ItalianTest):
    def assertRefused(self, function):
        error = in_another_thread(function)
        self.assertIsInstance(error, RuntimeError)
        self.assertEqual(str(error), "a CProprieta belongs to the thread that made it; make one for this thread")

    def test_an_object_of_another_thread_is_refused_however_it_is_used(self):
        bag = kaputil.Dispatch("KapUtil.CProprieta")
        count = bag.Count
        exact = kaputil.Variant("Object", bag)
        self.assertRefused(lambda: bag.Count())
        self.assertRefused(lambda: bag.count())
        self.assertRefused(count)
        self.assertRefused(lambda: setattr(bag, "Count", 1))
        self.assertRefused(lambda: bag("A"))
        self.assertRefused(lambda: list(bag))
        self.assertRefused(lambda: kaputil.kapEmpty(bag))
        self.assertRefused(lambda: kaputil.invoke(bag, "Count"))
        self.assertRefused(lambda: exact.value)

    def test_an_object_of_a_thread_that_has_ended_is_refused_too(self):
        bag = in_another_thread(lambda: kaputil.Dispatch("KapUtil.CProprieta"))
        with self.assertRaises(RuntimeError):
            bag.Count()
        self.assertRefused(bag.__class__.Count.__get__(bag))

    def test_showing_and_comparing_an_object_is_free(self):
        bag = kaputil.Dispatch("KapUtil.CProprieta")
        self.assertEqual(in_another_thread(lambda: repr(bag)), "<kaputil CProprieta>")
        self.assertIs(in_another_thread(lambda: bag == bag), True)

    def test_values_cross_freely(self):
        amount = kaputil.Variant("Currency", 5)
        self.assertEqual(in_another_thread(lambda: amount.value), 5)

    def test_each_thread_has_its_own_predeclared_object(self):
        kaputil.Errore.Numero = 5
        from kaputil import KapRound

        self.assertEqual(in_another_thread(lambda: kaputil.Errore.Numero), "0")
        self.assertEqual(in_another_thread(lambda: KapRound(2.6)), 3.0)

    def test_each_thread_has_its_own_locale(self):
        def work():
            kaputil.set_locale("en-US")
            return kaputil.change_type("1,234.5", "Double")

        self.assertEqual(in_another_thread(work), 1234.5)
        self.assertEqual(kaputil.change_type("1.234,5", "Double"), 1234.5)

    def test_a_factory_serves_every_thread(self):
        kaputil.register("Prova.Uno", lambda: kaputil.Dispatch("KapUtil.CProprieta"))
        self.addCleanup(kaputil.unregister, "Prova.Uno")
        self.assertEqual(in_another_thread(lambda: kaputil.Dispatch("Prova.Uno").Count()), 0)


class AtTheSameTime(ItalianTest):
    def setUp(self):
        super().setUp()
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        path = os.path.join(folder.name, "azienda.db")
        self.database = f"Provider=KapLocal;Data Source={path};Lock Timeout=20"
        connection(self.database).Execute("CREATE TABLE T (A int)")

    def test_other_threads_go_on_while_a_call_waits_for_the_database(self):
        # Threads change places only where one lets go of the interpreter: no thread is interrupted.
        interval = sys.getswitchinterval()
        sys.setswitchinterval(1000)
        self.addCleanup(sys.setswitchinterval, interval)

        first = connection(self.database)
        first.BeginTrans()
        first.Execute("INSERT INTO T (A) VALUES (1)")
        about_to_wait = threading.Event()
        outcome = []

        def write():
            second = connection(self.database)
            about_to_wait.set()
            try:
                second.Execute("INSERT INTO T (A) VALUES (2)")  # waits for the first transaction
                outcome.append("written")
            except kaputil.AutomationError as error:
                outcome.append(error)

        thread = threading.Thread(target=write)
        thread.start()
        about_to_wait.wait()
        self.assertEqual(outcome, [])  # the other one is in its call
        first.CommitTrans()
        thread.join()
        self.assertEqual(outcome, ["written"])

    def test_threads_with_connections_of_their_own_write_side_by_side(self):
        def write():
            database = connection(self.database)
            for number in range(50):
                database.Execute(f"INSERT INTO T (A) VALUES ({number})")

        threads = [threading.Thread(target=write) for _ in range(4)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        rows = kaputil.OpenRecordset("SELECT COUNT(*) AS N, SUM(A) AS S FROM T", connection(self.database))
        self.assertEqual([field.Value for field in rows.Fields], [200, 4900])


if __name__ == "__main__":
    unittest.main()
