"""What Python users expect of data access: `with connection:`, and `for row in recordset:`."""

from __future__ import annotations

from types import TracebackType
from typing import Any, ClassVar, Dict, Iterable, Iterator, List, Mapping, Optional, Sequence, Tuple, Type, TypeVar, cast

from . import _native
from ._errors import AutomationError
from ._objects import Object

Self = TypeVar("Self", bound="TransactionBlocks")

_CLOSED = 0  # adStateClosed
_IN_TRANSACTION = -2146825042  # 3246
_MOVE_PREVIOUS = 0x200  # adMovePrevious: the recordset goes back


class Row(Tuple[Any, ...]):
    """The values of one record in the order of its fields, and by the fields' names in any case.

        for row in rows:
            row[0], row["Codice"], row.codice
            codice, nome = row
            dict(row)

    Of several fields with one name it gives the first. A field named like a method of Python's tuples is reached by index
    only.
    """

    __slots__ = ()
    _names: ClassVar[Tuple[str, ...]] = ()
    _positions: ClassVar[Mapping[str, int]] = {}

    def keys(self) -> List[str]:
        """The fields' names in their order."""
        return list(self._names)

    def __getitem__(self, key: Any) -> Any:
        if not isinstance(key, str):
            return super().__getitem__(key)
        position = self._positions.get(key.casefold())
        if position is None:
            raise KeyError(key)
        return super().__getitem__(position)

    def __getattr__(self, name: str) -> Any:
        position = self._positions.get(name.casefold())
        if position is None:
            raise AttributeError(f"the record has no field {name}")
        return super().__getitem__(position)

    def __repr__(self) -> str:
        return "Row(" + ", ".join(f"{name}={value!r}" for name, value in zip(self._names, self)) + ")"

    def __reduce__(self) -> Tuple[Any, ...]:
        return _row, (self._names, tuple(self))


def _row_type(names: Sequence[str]) -> Type[Row]:
    """The class of the rows with these fields."""
    positions: Dict[str, int] = {}
    for position, name in enumerate(names):
        positions.setdefault(name.casefold(), position)
    body = {"__slots__": (), "__doc__": Row.__doc__, "_names": tuple(names), "_positions": positions}
    return cast(Type[Row], type("Row", (Row,), body))


def _row(names: Sequence[str], values: Iterable[Any]) -> Row:
    return _row_type(names)(values)


class TransactionBlocks(Object):
    """A connection in a `with` statement.

    Of an open connection the block is one transaction: it is committed at the end, and undone when an exception leaves the
    block. The connection stays open. A connection that the block itself opens is closed at its end.
    """

    __slots__ = ()

    def __enter__(self: Self) -> Self:
        opened = _native.get(self, "State") != _CLOSED
        if opened:
            _native.call(self, "BeginTrans", (), {})
        self._blocks().append(opened)
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        if not self._blocks().pop():
            if _native.get(self, "State") != _CLOSED:
                self._close()
        elif error is not None:
            self._undo()
        else:
            self._commit()

    def _blocks(self) -> List[bool]:
        """Of each block that is entered, the innermost last, whether the connection was open then."""
        blocks: List[bool] = self.__dict__.setdefault("blocks", [])
        return blocks

    def _close(self) -> None:
        try:
            _native.call(self, "Close", (), {})
        except AutomationError as error:
            if error.number != _IN_TRANSACTION:
                raise
            self._undo()
            _native.call(self, "Close", (), {})

    def _commit(self) -> None:
        try:
            _native.call(self, "CommitTrans", (), {})
        except AutomationError:
            self._undo()
            raise

    def _undo(self) -> None:
        """Undoes the transaction; because of an exception it is that one which the caller has to see."""
        try:
            _native.call(self, "RollbackTrans", (), {})
        except AutomationError:
            pass  # there is none left: the block or the database has ended it, or the connection is gone


class RowIteration(Object):
    """A recordset whose rows are iterated.

    Every record that is shown, from the first one on; where the cursor only goes forward, from the current one. Each is the
    current record while its row is at hand, and behind the last one the recordset stands at its end.
    """

    __slots__ = ()

    def __iter__(self) -> Iterator[Row]:
        at_end = _native.get(self, "EOF")
        empty = at_end and _native.get(self, "BOF")
        if not empty and _native.call(self, "Supports", (_MOVE_PREVIOUS,), {}):
            _native.call(self, "MoveFirst", (), {})
        fields = list(_native.elements(_native.get(self, "Fields")))
        make = _row_type([_native.get(field, "Name") for field in fields])
        return self._rows(fields, make)

    def _rows(self, fields: Sequence[Any], make: Type[Row]) -> Iterator[Row]:
        # The class's own functions: what a program derives from it does not change what a row is.
        members = vars(type(self))
        at_end, move_next = members["EOF"].fget, members["MoveNext"]
        value = vars(type(fields[0]))["Value"].fget if fields else None
        while not at_end(self):
            yield make(map(value, fields))
            move_next(self)


# What the classes of these names add to the members that the catalogue describes.
BASES: Mapping[str, type] = {"Connection": TransactionBlocks, "Recordset": RowIteration}
