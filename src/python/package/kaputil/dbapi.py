"""Databases through the interface that Python's own database modules share (DB-API 2.0, PEP 249).

    from kaputil import dbapi
    with dbapi.connect("Provider=KapLocal;Data Source=azienda.db") as database:
        cursor = database.cursor()
        cursor.execute("SELECT Codice, Nome FROM Clienti WHERE Fido > ?", [1000])
        for codice, nome in cursor:
            ...

A transaction begins with the first statement that writes, and ends with commit() or rollback(); closing a connection
undoes it. With autocommit every statement is a transaction of its own.
"""

from __future__ import annotations

import datetime
import re
import time
from collections import deque
from decimal import Decimal
from types import TracebackType
from typing import Any, Deque, FrozenSet, Iterator, List, Optional, Sequence, Tuple, Type

from . import _native
from ._errors import AutomationError
from ._functions import Dispatch
from ._holders import Ref

apilevel = "2.0"
threadsafety = 1  # threads may share the module, but not connections
paramstyle = "qmark"

Row = Tuple[Any, ...]
# name, type_code, display_size, internal_size, precision, scale, null_ok
Column = Tuple[str, int, None, Optional[int], Optional[int], Optional[int], bool]


class Warning(Exception):  # noqa: A001 - the interface's name
    """What a caller should know although nothing has failed."""


class Error(Exception):
    """What every error of the module is. `number` is the data-access code, 0 where there is none."""

    number: int = 0


class InterfaceError(Error):
    """The interface was used in a way that it does not allow."""


class DatabaseError(Error):
    """The database has reported an error."""


class DataError(DatabaseError):
    """A value is out of range, or of the wrong type."""


class OperationalError(DatabaseError):
    """The database cannot be reached, has no time or no room, or has rolled back."""


class IntegrityError(DatabaseError):
    """A constraint would be broken."""


class InternalError(DatabaseError):
    """The database is not in order."""


class ProgrammingError(DatabaseError):
    """A statement cannot be understood, or names what is not there."""


class NotSupportedError(DatabaseError):
    """The database does not have what is asked for."""


class TypeCode:
    """The codes of columns that hold one kind of values; equal to each of them."""

    def __init__(self, name: str, *codes: int) -> None:
        self.name = name
        self._codes: FrozenSet[int] = frozenset(codes)

    def __eq__(self, other: object) -> bool:
        if isinstance(other, TypeCode):
            return self._codes == other._codes
        return other in self._codes

    def __hash__(self) -> int:
        return hash(self._codes)

    def __repr__(self) -> str:
        return f"kaputil.dbapi.{self.name}"


_DATE = 133  # adDBDate
STRING = TypeCode("STRING", 8, 72, 129, 130, 200, 201, 202, 203)
BINARY = TypeCode("BINARY", 128, 204, 205)
NUMBER = TypeCode("NUMBER", 2, 3, 4, 5, 6, 11, 14, 16, 17, 18, 19, 20, 21, 131, 139)
DATETIME = TypeCode("DATETIME", 7, _DATE, 134, 135)
ROWID = TypeCode("ROWID")

Date = datetime.date
Time = datetime.time
Timestamp = datetime.datetime
Binary = bytes


def DateFromTicks(ticks: float) -> datetime.date:
    """The day of a moment, in seconds since 1970, where the program is run."""
    return Date(*time.localtime(ticks)[:3])


def TimeFromTicks(ticks: float) -> datetime.time:
    """The time of day of a moment, in seconds since 1970, where the program is run."""
    return Time(*time.localtime(ticks)[3:6])


def TimestampFromTicks(ticks: float) -> datetime.datetime:
    """A moment, in seconds since 1970, as the date and time where the program is run."""
    return Timestamp(*time.localtime(ticks)[:6])


_CLOSED = 0
_CLASS_OF_NUMBER = {
    -2147217873: IntegrityError,
    -2147217900: ProgrammingError,
    -2147217865: ProgrammingError,
    -2147217904: ProgrammingError,  # a parameter without value
    -2147217871: OperationalError,
    -2147217843: OperationalError,
    -2147467259: OperationalError,
    -2147217864: OperationalError,
    -2147168242: OperationalError,
    -2147217913: DataError,
    -2147217833: DataError,
    -2147217887: DataError,
    -2146824867: DataError,
    -2146825037: NotSupportedError,
    -2146824582: InterfaceError,  # no such provider
    -2146825287: ProgrammingError,
    -2146824584: ProgrammingError,
    -2146824579: ProgrammingError,
    -2146824577: ProgrammingError,  # another call is being executed
    -2146824576: OperationalError,  # the call was cancelled
}


def _raised(error: AutomationError) -> Error:
    made = _CLASS_OF_NUMBER.get(error.number, DatabaseError)(error.description)
    made.number = error.number
    return made


def _get(target: Any, member: str) -> Any:
    try:
        return _native.get(target, member)
    except AutomationError as error:
        raise _raised(error) from error


def _call(target: Any, member: str, *arguments: Any) -> Any:
    try:
        return _native.call(target, member, arguments, {})
    except AutomationError as error:
        raise _raised(error) from error


# What stands in texts, names and comments begins nothing.
_ASIDE = re.compile(r"'(?:[^']|'')*'|\"(?:[^\"]|\"\")*\"|\[[^\]]*\]|--[^\n]*|/\*.*?\*/", re.DOTALL)
_WRITES = re.compile(r"\b(?:INSERT|UPDATE|DELETE|MERGE|INTO|CREATE|ALTER|DROP|TRUNCATE|EXEC|EXECUTE|DBCC)\b", re.IGNORECASE)


def _begins_transaction(statement: str) -> bool:
    """Whether a script may write: a query needs no transaction, and would only keep others from writing."""
    return _WRITES.search(_ASIDE.sub(" ", statement)) is not None


def _argument(value: Any) -> Any:
    """A parameter's value as the library takes it."""
    if isinstance(value, datetime.datetime) or value is None:
        return value
    if isinstance(value, datetime.date):
        return datetime.datetime(value.year, value.month, value.day)
    if isinstance(value, datetime.time):
        return value.isoformat()
    if isinstance(value, (bytearray, memoryview)):
        return bytes(value)
    if isinstance(value, int) and not isinstance(value, bool) and not -(2**31) <= value < 2**31:
        return Decimal(value)
    return value


def connect(connection_string: str, user: str = "", password: str = "", *, autocommit: bool = False) -> "Connection":
    """Opens a database; the connection string is that of ADODB.Connection."""
    opened = Dispatch("ADODB.Connection")
    _call(opened, "Open", connection_string, user, password)
    return Connection(opened, autocommit=autocommit)


class Connection:
    """An open database."""

    Warning = Warning
    Error = Error
    InterfaceError = InterfaceError
    DatabaseError = DatabaseError
    DataError = DataError
    OperationalError = OperationalError
    IntegrityError = IntegrityError
    InternalError = InternalError
    ProgrammingError = ProgrammingError
    NotSupportedError = NotSupportedError

    def __init__(self, opened: Any, *, autocommit: bool = False) -> None:
        """`opened` is an open ADODB.Connection, which is closed with this one."""
        self._opened = opened
        self._autocommit = autocommit
        self._begun = False

    @property
    def ado(self) -> Any:
        """The ADODB.Connection behind it."""
        return self._required()

    @property
    def autocommit(self) -> bool:
        """Whether every statement is a transaction of its own; assigning commits one that is open."""
        return self._autocommit

    @autocommit.setter
    def autocommit(self, value: bool) -> None:
        self.commit()
        self._autocommit = bool(value)

    def close(self) -> None:
        """Closes the database; what was not committed is undone. Closing again does nothing."""
        opened = self._opened
        if opened is None or _get(opened, "State") == _CLOSED:
            self._opened = None
            return
        try:
            self.rollback()
        finally:
            self._opened = None
            _call(opened, "Close")

    def commit(self) -> None:
        """Makes what was written last."""
        opened = self._required()
        if self._begun:
            self._begun = False
            _call(opened, "CommitTrans")

    def rollback(self) -> None:
        """Undoes what was written since the last commit."""
        opened = self._required()
        if self._begun:
            self._begun = False
            try:
                _call(opened, "RollbackTrans")
            except OperationalError as error:
                if error.number != -2147168242:  # the database has undone it already
                    raise

    def cursor(self) -> "Cursor":
        """A cursor to run statements with."""
        self._required()
        return Cursor(self)

    def execute(self, operation: str, parameters: Sequence[Any] = ()) -> "Cursor":
        """Runs a statement with a cursor of its own, which it gives."""
        return self.cursor().execute(operation, parameters)

    def __enter__(self) -> "Connection":
        self._required()
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        """Commits, or undoes when an exception leaves the block. The connection stays open."""
        if self._opened is None:
            return
        if error is None:
            self.commit()
        else:
            self.rollback()

    def _required(self) -> Any:
        if self._opened is None:
            raise ProgrammingError("The connection is closed.")
        return self._opened

    def _before(self, statement: str) -> Any:
        opened = self._required()
        if not self._autocommit and not self._begun and _begins_transaction(statement):
            _call(opened, "BeginTrans")
            self._begun = True
        return opened


class Cursor:
    """Runs statements and gives the rows of their answers."""

    def __init__(self, connection: Connection) -> None:
        self.connection = connection
        self.arraysize = 1
        self.description: Optional[Tuple[Column, ...]] = None
        self.rowcount = -1
        self._records: Any = None
        self._rows: Deque[Row] = deque()
        self._dates: Tuple[int, ...] = ()
        self._closed = False

    def close(self) -> None:
        """Gives the rows back that were not fetched."""
        self._forget()
        self._closed = True

    def execute(self, operation: str, parameters: Sequence[Any] = ()) -> "Cursor":
        """Runs a statement, or a script of several; `parameters` are the values of its question marks."""
        self._begin()
        if isinstance(parameters, (str, bytes)) or not hasattr(parameters, "__len__"):
            raise ProgrammingError("The parameters are not a sequence.")
        opened = self.connection._before(operation)
        affected = Ref(-1)
        command = Dispatch("ADODB.Command")
        try:
            command.ActiveConnection = opened
            command.CommandText = operation
            given = [_argument(value) for value in parameters]
            records = command.Execute(affected, given) if given else command.Execute(affected)
        except AutomationError as error:
            raise _raised(error) from error
        self._take(records, affected.value)
        return self

    def executemany(self, operation: str, seq_of_parameters: Sequence[Sequence[Any]]) -> "Cursor":
        """Runs a statement once with each of the parameters; rowcount is then that of all together."""
        self._begin()
        written = 0
        for parameters in seq_of_parameters:
            self.execute(operation, parameters)
            if self.description is not None:
                raise ProgrammingError("The statement answers rows: run it with execute().")
            written += max(self.rowcount, 0)
        self.rowcount = written
        return self

    def callproc(self, procname: str, parameters: Sequence[Any] = ()) -> List[Any]:
        """Calls a stored procedure and gives its parameters' values, those changed that come back."""
        self._begin()
        opened = self.connection._before("EXEC")
        affected = Ref(-1)
        command = Dispatch("ADODB.Command")
        try:
            command.ActiveConnection = opened
            command.CommandType = 4  # adCmdStoredProc
            command.CommandText = procname
            command.Parameters.Refresh()
            described = list(command.Parameters)[1:]  # behind the return value
            if len(parameters) > len(described):
                raise ProgrammingError(f"{procname} takes {len(described)} parameters.")
            for parameter, value in zip(described, parameters):
                parameter.Value = _argument(value)
            records = command.Execute(affected)
            values = [parameter.Value for parameter in described[: len(parameters)]]
        except AutomationError as error:
            raise _raised(error) from error
        self._take(records, affected.value)
        return values

    def nextset(self) -> Optional[bool]:
        """Goes on to the next answer of a script; None when there is none."""
        self._required()
        records = self._records
        self._rows.clear()
        if records is None:
            return None
        affected = Ref(-1)
        following = _call(records, "NextRecordset", affected)
        if not following:
            self._forget()
            return None
        self._take(following, affected.value)
        return True

    def fetchone(self) -> Optional[Row]:
        """The next row; None behind the last one."""
        self._fill(1)
        return self._rows.popleft() if self._rows else None

    def fetchmany(self, size: Optional[int] = None) -> List[Row]:
        """The next rows, `arraysize` of them when it is not said how many."""
        wanted = self.arraysize if size is None else size
        self._fill(wanted)
        return [self._rows.popleft() for _ in range(min(wanted, len(self._rows)))]

    def fetchall(self) -> List[Row]:
        """The rows that are left."""
        self._fill(-1)
        rows = list(self._rows)
        self._rows.clear()
        return rows

    def __iter__(self) -> Iterator[Row]:
        return self

    def __next__(self) -> Row:
        row = self.fetchone()
        if row is None:
            raise StopIteration
        return row

    def __enter__(self) -> "Cursor":
        return self

    def __exit__(self, *exception: object) -> None:
        self.close()

    def setinputsizes(self, sizes: Sequence[Any]) -> None:
        """Does nothing: parameters have the size of their values."""

    def setoutputsize(self, size: int, column: Optional[int] = None) -> None:
        """Does nothing: columns come whole."""

    _CHUNK = 256  # rows that are taken from the recordset at once

    def _required(self) -> None:
        if self._closed:
            raise ProgrammingError("The cursor is closed.")
        self.connection._required()

    def _begin(self) -> None:
        self._required()
        self._forget()

    def _forget(self) -> None:
        self._records = None
        self._rows.clear()
        self._dates = ()
        self.description = None
        self.rowcount = -1

    def _take(self, records: Any, affected: Any) -> None:
        self._records = records
        self._rows.clear()
        if _get(records, "State") == _CLOSED:
            self.description = None
            self._dates = ()
            self.rowcount = int(affected)
            return
        self.rowcount = -1
        self.description = tuple(_column(field) for field in _get(records, "Fields"))
        self._dates = tuple(i for i, column in enumerate(self.description) if column[1] == _DATE)

    def _fill(self, wanted: int) -> None:
        """Has so many rows at hand, as far as there are any; -1: all."""
        self._required()
        if self.description is None:
            raise ProgrammingError("The last statement has answered no rows.")
        while (wanted < 0 or len(self._rows) < wanted) and not _get(self._records, "EOF"):
            columns = _call(self._records, "GetRows", -1 if wanted < 0 else max(self._CHUNK, wanted))
            for position in self._dates:
                columns[position] = [value if value is None else value.date() for value in columns[position]]
            self._rows.extend(zip(*columns))


def _column(field: Any) -> Column:
    none = 255
    nullable = 32  # adFldIsNullable
    precision, scale = _get(field, "Precision"), _get(field, "NumericScale")
    return (_get(field, "Name"), int(_get(field, "Type")), None, _get(field, "DefinedSize"),
            None if precision == none else precision, None if scale == none else scale,
            bool(_get(field, "Attributes") & nullable))
