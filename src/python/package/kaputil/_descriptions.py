"""The classes of the catalogue as data, and how Python shows them."""

from __future__ import annotations

import datetime
import decimal
import inspect
import keyword
from dataclasses import dataclass
from typing import Any, List, Mapping, Optional, Tuple

from . import _native

# What Python has for each type of automation; None where that is an object or can be anything.
_PYTHON_TYPES: Mapping[str, type] = {
    "Boolean": bool,
    "Byte": int,
    "Integer": int,
    "Long": int,
    "Single": float,
    "Double": float,
    "Currency": decimal.Decimal,
    "Decimal": decimal.Decimal,
    "Date": datetime.datetime,
    "String": str,
}


def python_type(type_name: str) -> Optional[type]:
    """The class of the Python values of a type; None for objects and Variants."""
    return _PYTHON_TYPES.get(type_name)


@dataclass(frozen=True)
class Parameter:
    """One parameter of a member."""

    name: str
    type: str
    object_class: Optional[str]
    by_reference: bool
    optional: bool
    default: Any

    @property
    def python_name(self) -> str:
        return f"{self.name}_" if keyword.iskeyword(self.name) else self.name



@dataclass(frozen=True)
class Member:
    """A member of a class: an attribute, or what is called."""

    name: str
    attribute: bool
    function: Any  # that calls it of the object given first, or reads it
    call: Any  # of the default member: that calls it; else None
    assignable: bool
    default: bool
    parameters: Tuple[Parameter, ...]
    type: str  # of its value; "Empty" when it gives none
    object_class: Optional[str]
    documentation: str

    @classmethod
    def described(cls, description: Mapping[str, Any]) -> Member:
        fields = dict(description)
        fields["parameters"] = tuple(Parameter(**one) for one in description["parameters"])
        return cls(**fields)

    @property
    def gives_value(self) -> bool:
        return self.type != "Empty"

    def signature(self, *leading: str) -> inspect.Signature:
        """Its signature, behind parameters with the names given."""
        kind = inspect.Parameter.POSITIONAL_OR_KEYWORD
        parameters = [inspect.Parameter(name, kind) for name in leading]
        for one in self.parameters:
            default = one.default if one.optional else inspect.Parameter.empty
            hint = _annotation(one.type, one.object_class)
            parameters.append(inspect.Parameter(one.python_name, kind, default=default, annotation=hint))
        result = _annotation(self.type, self.object_class) if self.gives_value else None
        return inspect.Signature(parameters, return_annotation=result)


def _annotation(type_name: str, object_class: Optional[str]) -> object:
    return object_class or python_type(type_name) or Any


@dataclass(frozen=True)
class Class:
    """A class of the catalogue, its members in interface order."""

    name: str
    documentation: str
    members: Tuple[Member, ...]

    @classmethod
    def described(cls, description: Mapping[str, Any]) -> Class:
        members = tuple(Member.described(one) for one in description["members"])
        return cls(description["name"], description["documentation"], members)


def all_classes() -> List[Class]:
    """Every class that the catalogue names, and those of the objects that their members take and give."""
    return [Class.described(one) for one in _native.class_descriptions()]


def global_class() -> Class:
    """The class of the predeclared object, whose members are called without naming it."""
    return Class.described(_native.global_class())
