#!/usr/bin/env python3
"""Measures the Python package: calls of members beside a method of one of the interpreter's own extensions, and rows
beside the interpreter's own database module. Each pair prints both arms and their ratio; what they give is compared first.

usage: run.py [--json] [FILTER]
"""

import collections
import json
import sqlite3
import sys
import timeit

import kaputil

ROWS = 20_000
REPEATS = 7
CALLS = 100_000


def nanoseconds(work, times):
    """Of one run of `work`, in the fastest of some series."""
    return min(timeit.repeat(work, number=times, repeat=REPEATS)) / times * 1e9


def made_tables():
    """The same rows in a recordset that can be read again and again, and in the interpreter's own module."""
    values = [(number, f"nome {number}", number * 0.5, number % 7, "x") for number in range(1, ROWS + 1)]
    own = sqlite3.connect(":memory:")
    own.execute("CREATE TABLE t (a integer PRIMARY KEY, b text, c real, d integer, e text)")
    own.executemany("INSERT INTO t VALUES (?, ?, ?, ?, ?)", values)
    connection = kaputil.Dispatch("ADODB.Connection")
    connection.Open("Provider=KapLocal;Data Source=:memory:")
    connection.Execute("CREATE TABLE t (a int PRIMARY KEY, b nvarchar(30), c float, d int, e nvarchar(10))")
    for start in range(0, ROWS, 500):
        rows = ", ".join(f"({a}, '{b}', {c!r}, {d}, '{e}')" for a, b, c, d, e in values[start:start + 500])
        connection.Execute(f"INSERT INTO t VALUES {rows}")
    recordset = kaputil.Dispatch("ADODB.Recordset")
    recordset.CursorLocation = kaputil.adUseClient
    recordset.Open("SELECT a, b, c, d, e FROM t ORDER BY a", connection)
    return recordset, own


def library_rows(recordset):
    return [tuple(row) for row in recordset]


def library_fields(recordset):
    fields = [recordset.Fields(position) for position in range(5)]
    rows = []
    recordset.MoveFirst()
    while not recordset.EOF:
        rows.append(tuple(field.Value for field in fields))
        recordset.MoveNext()
    return rows


def library_get_rows(recordset):
    recordset.MoveFirst()
    return recordset.GetRows()


def own_rows(database):
    return [tuple(row) for row in database.execute("SELECT a, b, c, d, e FROM t ORDER BY a")]


CALL, ROW = "a method of collections.deque", "the interpreter's own sqlite3"


def pairs():
    """Name, the library's way and what it is, the baseline and what it is, how often, what is counted, the aim."""
    bag = kaputil.Dispatch("KapUtil.CProprieta")
    bag.Scrivi("Codice", "A")
    queue = collections.deque("A")
    yield ("a member without arguments", bag.Count, "CProprieta.Count", lambda: queue.count("A"), CALL, CALLS, 1, 4)
    yield ("a member with a text", lambda: bag.Leggi("Codice"), "CProprieta.Leggi", lambda: queue.count("Codice"), CALL, CALLS, 1, 4)
    recordset, database = made_tables()
    expected = own_rows(database)
    for way in (library_rows, library_fields):
        if way(recordset) != expected:
            raise SystemExit(f"{way.__name__} gives other rows than the interpreter's own module")
    columns = library_get_rows(recordset)
    if list(zip(*columns)) != expected:
        raise SystemExit("GetRows gives other values than the interpreter's own module")
    yield ("reading a property", lambda: recordset.EOF, "Recordset.EOF", lambda: queue.maxlen, "an attribute of collections.deque",
           CALLS, 1, 4)
    yield ("a loop over the rows", lambda: library_rows(recordset), "for row in recordset", lambda: own_rows(database), ROW, 1, ROWS, 3)
    yield ("a loop by MoveNext and fields", lambda: library_fields(recordset), "MoveNext and Field.Value", lambda: own_rows(database),
           ROW, 1, ROWS, 3)
    yield ("all rows at once", lambda: library_get_rows(recordset), "GetRows",
           lambda: database.execute("SELECT a, b, c, d, e FROM t ORDER BY a").fetchall(), f"{ROW}, fetchall", 1, ROWS, 1)


def results(wanted):
    """What was found of each pair, as kaputil-bench gives it with --json."""
    for name, work, words, baseline, baseline_words, times, counted, aim in pairs():
        if wanted in name:
            own, other = (nanoseconds(each, times) / counted for each in (work, baseline))
            yield {"name": f"Python: {name}", "oursIs": words, "baselineIs": baseline_words, "ours": own, "baseline": other,
                   "unit": "ns", "ratio": own / other, "aim": aim, "direction": "at most", "met": own <= aim * other}


def print_table(found):
    print("The fastest of seven series; nanoseconds a call or a row of five columns, and the ratio to the baseline: a")
    print("method or attribute of collections.deque, and sqlite3 with the same rows.\n")
    print(f"{'':32}{'kaputil':>10}{'baseline':>10}{'ratio':>8}{'aim':>6}")
    for one in found:
        name = one["name"].split(": ", 1)[1]
        print(f"{name:32}{one['ours']:10.0f}{one['baseline']:10.0f}{one['ratio']:8.2f}{one['aim']:6}")


def main(arguments):
    as_json = "--json" in arguments
    rest = [argument for argument in arguments if argument != "--json"]
    if len(rest) > 1 or any(argument.startswith("-") for argument in rest):
        print(__doc__, file=sys.stderr)
        sys.exit(2)
    found = results(rest[0] if rest else "")
    if as_json:
        for one in found:
            print(json.dumps(one))
    else:
        print_table(found)


if __name__ == "__main__":
    main(sys.argv[1:])
