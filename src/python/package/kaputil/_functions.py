"""What the package offers beside the members of the library's classes."""

from __future__ import annotations

import os
from typing import Any, Callable, Optional, Union

from . import _native
from ._holders import Variant, exactly


def Dispatch(name: str) -> Any:
    """A new object by its programmatic name ("KapUtil.CProprieta", "ADODB.Connection"), in any case.

    Raises 429 for a name that stands for nothing.
    """
    return _native.create(name)


def invoke(target: object, member: str, /, *arguments: Any, **named: Any) -> Variant:
    """Calls a member, or reads a property, and gives the result as a Variant with .type and .value.

    The target may be a Python object, too: its member is called just as the library would.
    """
    return exactly(_native.invoke(target, member, arguments, named))


def change_type(value: object, type_name: str) -> Any:
    """The value converted to a type under the current locale; see Variant for the names of types."""
    return _native.change_type(value, type_name)


def is_numeric(value: object) -> bool:
    """Whether a value is a number, or a text that reads as one under the current locale."""
    answer: bool = _native.is_numeric(value)
    return answer


def is_date(value: object) -> bool:
    """Whether a value is a date, or a text that reads as one under the current locale."""
    answer: bool = _native.is_date(value)
    return answer


def format(value: object, fmt: str) -> str:
    """The value written by a format of the runtime's ("#,##0.00", "dd/mm/yyyy"), under the current locale."""
    text: str = _native.format(value, fmt)
    return text


def register(name: str, factory: Callable[[], object]) -> None:
    """Makes a function answer for a programmatic name, in every thread and before any class of that name.

    It gives the object, Python's or the library's, or None or Nothing for an unset one.
    """
    _native.register(name, factory)


def unregister(name: str) -> None:
    """Takes the function back; the name then stands for what it stood for before."""
    _native.unregister(name)


def set_locale(name: str) -> None:
    """Sets this thread's locale ("it-IT", "en-US", ...); raises 5 for one that is not known."""
    _native.set_locale(name)


def locale() -> str:
    """This thread's locale."""
    name: str = _native.locale()
    return name


def message_log(path: Optional[Union[str, "os.PathLike[str]"]]) -> None:
    """Logs message boxes to a file, for the whole process; None for the system log."""
    _native.message_log(path)
