"""Calls while memory ends: each is done or raises an error, and the interpreter goes on."""

import ctypes
import datetime
import decimal
import os
import subprocess
import sys
import unittest

import kaputil
from support import table

PRELOADED = "KAPUTIL_FAILING_MEMORY"


def bag():
    made = kaputil.Dispatch("KapUtil.CProprieta")
    made.Scrivi("Uno", "un valore piu' lungo di una parola")
    made.Scrivi("Due", decimal.Decimal("2.50"))
    return made.Leggi("Uno"), made.Leggi()


def rows():
    opened = table()
    read = opened.Execute("SELECT A, B, A * 1.5 AS C FROM Prova WHERE A > 1 ORDER BY B").GetRows()
    opened.Close()
    return read


def transaction():
    opened = table()
    opened.BeginTrans()
    opened.Execute("INSERT INTO Prova VALUES (4, 'quattro')")
    opened.CommitTrans()


def refused():
    try:
        table().Execute("SELECT * FROM Nessuna")
    except kaputil.AutomationError as error:
        return error.number, str(error)
    raise AssertionError("not refused")


def values():
    reference = kaputil.Ref([1, "due", None, datetime.datetime(2024, 2, 29, 12, 30), [3.5, True]])
    reference.value = kaputil.KapRound(2.345, 2)
    return reference.value


class Held:
    """An object of Python's that counts how many of its kind are alive."""

    alive = 0

    def __init__(self):
        Held.alive += 1

    def __del__(self):
        Held.alive -= 1


def exact():
    return kaputil.Variant("Object", Held()).type


WORKS = [bag, rows, transaction, refused, values, exact]


def with_requests_failing(work, library):
    """How often the work has met a request for memory that failed: all of the first, fewer of many."""
    failures = 0
    nth = 1
    failed = True
    while failed:
        for for_good in (0, 1):
            library.kaputil_start_memory(nth, for_good)
            try:
                work()
            except (MemoryError, kaputil.AutomationError):
                pass
            finally:
                failed = library.kaputil_stop_memory() == 1
            if Held.alive != 0:
                raise AssertionError(f"{work.__name__} holds an object after request {nth}")
            work()  # nothing is left of the one before, such as an open connection to its database
        failures += failed
        nth += 1 + nth // 24
    return failures


def main():
    library = ctypes.CDLL(os.environ[PRELOADED])
    library.kaputil_start_memory.argtypes = [ctypes.c_int64, ctypes.c_int]
    for work in WORKS:
        work()
        print(work.__name__, with_requests_failing(work, library), flush=True)


@unittest.skipUnless(PRELOADED in os.environ, "the library that lets memory end is built with the tests")
class MemoryThatEnds(unittest.TestCase):
    def test_ends_no_interpreter(self):
        library = os.environ[PRELOADED]
        preloaded = ":".join(filter(None, [library, os.environ.get("LD_PRELOAD")]))
        sanitizer = ":".join(filter(None, [os.environ.get("ASAN_OPTIONS"), "verify_asan_link_order=0"]))
        done = subprocess.run(
            [sys.executable, __file__, "--calls"],
            env=dict(os.environ, LD_PRELOAD=preloaded, ASAN_OPTIONS=sanitizer),
            capture_output=True,
            text=True,
            timeout=280,
            check=False,
        )
        self.assertEqual(0, done.returncode, done.stdout + done.stderr[-4000:])
        counts = dict(line.split() for line in done.stdout.splitlines())
        self.assertEqual([work.__name__ for work in WORKS], list(counts))
        for name, count in counts.items():
            self.assertGreater(int(count), 0, name)


if __name__ == "__main__":
    if "--calls" in sys.argv:
        main()
    else:
        unittest.main()
