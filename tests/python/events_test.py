"""Handlers of the events of connections and recordsets."""

import gc
import unittest
import weakref

import kaputil
from support import ItalianTest, table


class Watch:
    """Notes what it is told, and answers as it is told to."""

    def __init__(self):
        self.told = []
        self.answers = {}

    def _note(self, event, status, *what):
        self.told.append((event, *what))
        status.value = self.answers.get(event, status.value)

    def WillMove(self, reason, status: kaputil.Ref, recordset):
        self._note("WillMove", status, kaputil.EventReasonEnum(reason).name)

    def movecomplete(self, reason, error, status: "kaputil.Ref", recordset):
        self._note("MoveComplete", status, recordset.AbsolutePosition, error.Number if error else 0)

    def WillChangeField(self, count, fields, status: kaputil.Ref, recordset):
        self._note("WillChangeField", status, count, [field.Name for field in fields])

    def WillExecute(self, source: kaputil.Ref, cursor_type, lock_type, options, status: kaputil.Ref, command, recordset,
                    connection):
        self._note("WillExecute", status, source.value)
        if source.value == "SELECT 1 AS A":
            source.value = "SELECT 2 AS A"

    def InfoMessage(self, error, status: kaputil.Ref, connection):
        self._note("InfoMessage", status, error.Description)

    def ExecuteComplete(self, rows, error, status: kaputil.Ref, command, recordset, connection):
        self._note("ExecuteComplete", status, rows, error.Number if error else 0)


class Failing:
    def WillMove(self, reason, status, recordset):
        raise ValueError("oggi no")


class EventsTest(ItalianTest):
    def setUp(self):
        super().setUp()
        self.connection = table()
        self.rows = kaputil.Dispatch("ADODB.Recordset")
        self.rows.Open("SELECT A, B FROM Prova ORDER BY A", self.connection, kaputil.adOpenStatic,
                       kaputil.adLockOptimistic)
        self.watch = Watch()

    def test_methods_are_called_in_any_case(self):
        with kaputil.WithEvents(self.rows, self.watch) as events:
            self.assertIs(events.handler, self.watch)
            self.rows.MoveNext()
        self.assertEqual(self.watch.told, [("WillMove", "adRsnMoveNext"), ("MoveComplete", 2, 0)])
        self.rows.MoveNext()
        self.assertEqual(len(self.watch.told), 2)

    def test_a_class_of_handlers_gets_a_new_object(self):
        with kaputil.WithEvents(self.rows, Watch) as events:
            self.rows.MoveLast()
            self.assertEqual(events.handler.told, [("WillMove", "adRsnMoveLast"), ("MoveComplete", 3, 0)])

    def test_a_status_cancels(self):
        self.watch.answers = {"WillMove": kaputil.adStatusCancel, "WillChangeField": kaputil.adStatusCancel}
        with kaputil.WithEvents(self.rows, self.watch):
            self.assertRaisesNumber(-2147217842, self.rows.MoveNext)
            self.assertEqual(self.rows.AbsolutePosition, 1)
            field = self.rows.Fields("B")
            self.assertRaisesNumber(-2147217842, setattr, field, "Value", "altro")
            self.assertEqual(field.Value, "uno")
        self.assertEqual(self.watch.told, [("WillMove", "adRsnMoveNext"), ("MoveComplete", 1, -2147217842),
                                           ("WillChangeField", 1, ["B"])])

    def test_a_text_passed_by_reference_is_what_is_run(self):
        with kaputil.WithEvents(self.connection, self.watch):
            self.assertEqual(self.connection.Execute("SELECT 1 AS A").Fields("A").Value, 2)
            self.connection.Execute("PRINT 'buongiorno'")
            self.assertRaisesNumber(-2147217865, self.connection.Execute, "SELECT * FROM Manca")
        self.assertEqual(self.watch.told, [
            ("WillExecute", "SELECT 1 AS A"), ("ExecuteComplete", -1, 0),
            ("WillExecute", "PRINT 'buongiorno'"), ("InfoMessage", "buongiorno"), ("ExecuteComplete", -1, 0),
            ("WillExecute", "SELECT * FROM Manca"), ("ExecuteComplete", -1, -2147217865)])

    def test_exceptions_reach_the_caller(self):
        with kaputil.WithEvents(self.rows, Failing()):
            with self.assertRaisesRegex(ValueError, "oggi no"):
                self.rows.MoveNext()
        self.assertEqual(self.rows.AbsolutePosition, 1)

    def test_closing_lets_the_handler_go(self):
        events = kaputil.WithEvents(self.rows, Watch)
        gone = weakref.ref(events.handler)
        events.close()
        events.close()
        del events
        gc.collect()
        self.assertIsNone(gone())

    def test_only_objects_with_events_have_handlers(self):
        self.assertRaises(TypeError, kaputil.WithEvents, kaputil.Dispatch("KapUtil.CProprieta"), self.watch)
        self.assertRaises(TypeError, kaputil.WithEvents, self.watch, self.watch)
        self.assertRaises(TypeError, kaputil.WithEvents, self.rows, 3)


if __name__ == "__main__":
    unittest.main()
