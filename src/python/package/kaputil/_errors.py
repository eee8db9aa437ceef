"""The errors of automation, and Python's exceptions as the library sees them."""

import operator
from typing import Tuple

# What an exception that is no automation error counts as: "exception occurred".
_EXCEPTION = -2147352567


class AutomationError(Exception):
    """What a member raises: a number that programs compare, a source, and a description for people."""

    def __init__(self, number: int = 0, description: str = "", source: str = "") -> None:
        super().__init__(number, description, source)
        self.number = number
        self.description = description
        self.source = source

    def __str__(self) -> str:
        return f"{self.number}: {self.description}"


class MemberNotFound(AutomationError, AttributeError):
    """An object has no member of the name asked for (438)."""


def parts(error: BaseException) -> Tuple[int, str, str]:
    """The number, description and source that the library sees of an exception."""
    if isinstance(error, AutomationError):
        return _number(error.number), str(error.description), str(error.source)
    try:
        return _EXCEPTION, str(error), ""
    except Exception:
        return _EXCEPTION, type(error).__name__, ""  # its own text cannot be made


def _number(given: object) -> int:
    try:
        number = operator.index(given)  # type: ignore[arg-type]
    except TypeError:
        return _EXCEPTION
    return number if -(2**31) <= number < 2**31 else _EXCEPTION
