"""The register of document numbers: whether every number of a counter and year can be accounted for.

    import kaputil.numbers
    for row in kaputil.numbers.register(connection, "FAT", 2025):
        print(row.first, row.last, row.state, row.carriers)
    for one in kaputil.numbers.registers(connection, year=2025):
        print(one.counter, one.totals["missing"], one.anomalies)

A number is carried by documents (mag_TDocumenti, by the counter of their type), invoices (mag_TFatture), accounting
entries whose register is the counter's code, and reservations. Nothing is written.
"""

from __future__ import annotations

import datetime
from typing import Any, Dict, List, NamedTuple, Optional

from . import _native

__all__ = ["Anomaly", "Carrier", "Register", "Row", "register", "registers"]


class Carrier(NamedTuple):
    """Who carries a number."""

    kind: str
    """"document", "invoice", "entry" (of the accounts) or "reservation"."""
    type: str
    """The type of a document or invoice; the state of a reservation ("", "D" read, "U" taken, "M" taken for the accounts)."""
    number: int
    date: Optional[datetime.date]
    registered: bool
    """Whether a document says that it is in the accounts."""


class Row(NamedTuple):
    """The numbers first to last, several only where nobody carries them."""

    first: int
    last: int
    state: str
    """"used", "provisional", "reserved", "missing", "doubled" or "beyond" (below 1, or above the counter)."""
    carriers: List[Carrier]


class Anomaly(NamedTuple):
    """What is not as it should be."""

    kind: str
    """"missing", "doubled", "beyond", "entryWithoutDocument", "documentWithoutEntry", "reservedInUse",
    "reservationExpired", "reservationUnused", "dateBack", "otherYear" or "counterChanged"."""
    first: int
    last: int
    carriers: List[Carrier]
    other: str
    """The other counter of "counterChanged"."""


class Register(NamedTuple):
    """The numbers of one counter and year."""

    counter: str
    year: int
    description: str
    has_counter: bool
    """False: there are documents or reservations, but no such counter."""
    definitive: Optional[int]
    provisional: Optional[int]
    keeps_provisional: bool
    totals: Dict[str, int]
    """How many numbers are used, reserved, missing, doubled, and provisional, ahead or beyond outside the counter."""
    rows: List[Row]
    anomalies: List[Anomaly]


def _carriers(given: List[Any]) -> List[Carrier]:
    return [Carrier(*one) for one in given]


def _register(*parts: Any) -> Register:
    *facts, rows, anomalies = parts
    counter, year, description, has_counter, definitive, provisional, keeps_provisional, totals = facts
    return Register(
        counter,
        year,
        description,
        has_counter,
        definitive,
        provisional,
        keeps_provisional,
        totals,
        [Row(first, last, state, _carriers(carriers)) for first, last, state, carriers in rows],
        [Anomaly(kind, first, last, _carriers(carriers), other) for kind, first, last, carriers, other in anomalies],
    )


def registers(
    connection: object,
    counter: Optional[str] = None,
    year: Optional[int] = None,
    today: Optional[datetime.date] = None,
) -> List[Register]:
    """The registers of all counters and years, or of one counter or year, in their order.

    The connection is an open one or a connection string; `today` decides which reservations have expired. Raises the
    database's errors, and 13 for a number or year that is none.
    """
    return [_register(*parts) for parts in _native.number_registers(connection, counter, year, today)]


def register(connection: object, counter: str, year: int, today: Optional[datetime.date] = None) -> List[Row]:
    """The rows of one register: every number from 1 to the counter's value, and what is carried outside of that.

    Empty when the database knows neither such a counter nor documents of it.
    """
    found = registers(connection, counter, year, today)
    return found[0].rows if found else []
