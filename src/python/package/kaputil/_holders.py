"""Holders of values: an argument passed by reference, and a value with its exact type."""

from __future__ import annotations

from typing import Any, Generic, TypeVar

from . import _native

T = TypeVar("T")


class Ref(Generic[T]):
    """Holds an argument passed by reference; .value is what the member left in it.

    A parameter of a Python method that is annotated as Ref takes an argument of the library's by reference.
    """

    def __init__(self, value: T = None) -> None:  # type: ignore[assignment]
        self.value = value

    def __repr__(self) -> str:
        return f"kaputil.Ref({self.value!r})"


class Variant:
    """A value with its exact automation type.

    type_name is "Empty", "Null", "Byte", "Integer", "Long", "Single", "Double", "Currency", "Decimal", "Date", "String",
    "Boolean", "Object", "Array", or "Variant" for the type that the value has by itself. A value of another type is
    converted under the current locale.
    """

    __slots__ = ("_exact",)

    def __init__(self, type_name: str, value: object = None) -> None:
        self._exact: Any = _native.exact_value(type_name, value)

    @property
    def type(self) -> str:
        """The name of the exact type."""
        name: str = self._exact.type
        return name

    @property
    def value(self) -> Any:
        """The value as Python has it."""
        return self._exact.value

    def __repr__(self) -> str:
        return f"kaputil.Variant({self.type!r}, {self.value!r})"

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Variant):
            return NotImplemented
        same: bool = self.type == other.type and self.value == other.value
        return same

    def __hash__(self) -> int:
        return hash((self.type, self.value))


def exactly(exact: Any) -> Variant:
    """The Variant of a value that the extension gave."""
    made = Variant.__new__(Variant)
    made._exact = exact
    return made
